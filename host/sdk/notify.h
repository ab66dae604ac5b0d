#pragma once
// Notifications of what happens to the scene as a whole.

// Codes, and what the call parameter of each is (null where nothing is said).
enum NotifyCode : int {
    NOTIFY_SYSTEM_SHUTDOWN = 0x02, ///< the host is about to end; the scene is still whole
    NOTIFY_SYSTEM_PRE_RESET = 0x03,
    NOTIFY_SYSTEM_POST_RESET = 0x04,
    NOTIFY_SYSTEM_PRE_NEW = 0x05,
    NOTIFY_SYSTEM_POST_NEW = 0x06,
    NOTIFY_FILE_PRE_OPEN = 0x09,  ///< const char*, the file
    NOTIFY_FILE_POST_OPEN = 0x0A, ///< const char*, the file
    NOTIFY_FILE_PRE_MERGE = 0x0B,
    NOTIFY_FILE_POST_MERGE = 0x0C,
    NOTIFY_FILE_PRE_SAVE = 0x0D,    ///< const char*, the file
    NOTIFY_FILE_POST_SAVE = 0x0E,   ///< const char*, the file
    NOTIFY_FILE_OPEN_FAILED = 0x0F, ///< const char*, the file
    NOTIFY_PRE_RENDER = 0x20,       ///< before the first frame of a job
    NOTIFY_POST_RENDER = 0x21,      ///< after the last one, also when the job failed or was aborted
    NOTIFY_PRE_RENDERFRAME = 0x22,  ///< TimeValue*, the frame's time
    NOTIFY_POST_RENDERFRAME = 0x23, ///< TimeValue*
    NOTIFY_TIME_CHANGED = 0x30,     ///< TimeValue*, the new current time
    NOTIFY_TIMEUNITS_CHANGED = 0x31,
    NOTIFY_ANIMATION_RANGE_CHANGED = 0x32,
    NOTIFY_SELECTIONSET_CHANGED = 0x40,
    NOTIFY_NODE_CREATED = 0x50,           ///< INode*
    NOTIFY_SCENE_PRE_DELETED_NODE = 0x52, ///< INode*
    NOTIFY_SCENE_POST_DELETED_NODE = 0x53,
    NOTIFY_NODE_RENAMED = 0x54,    ///< INode*, under its new name
    NOTIFY_NODE_CLONED = 0x55,     ///< INode*, the clone
    NOTIFY_SCENE_POST_UNDO = 0x60, ///< const char*, the step's name
    NOTIFY_SCENE_POST_REDO = 0x61, ///< const char*, the step's name
    NOTIFY_MERGE_DONE = 0x68,
};

/// `param` is what was registered.
using NOTIFYPROC = void (*)(void* param, int code, void* callParam);

// These go to the current host (GetCOREInterface); without one they do nothing.

/// Calls `proc` for every notification of `code`. False without a host or procedure. A procedure registered while a
/// notification runs hears the next one first.
bool RegisterNotification(NOTIFYPROC proc, void* param, int code);
/// Ends it; allowed at any time, also inside a notification, and nothing is called any more from then on.
void UnRegisterNotification(NOTIFYPROC proc, void* param, int code);
/// Tells everyone registered for `code`, in the order of registration.
void BroadcastNotification(int code, void* callParam = nullptr);
