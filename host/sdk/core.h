#pragma once
// The host's core: the one object through which a plug-in reaches the running program.

#include <atomic>
#include <functional>
#include <vector>

#include "sdk/atmos.h"
#include "sdk/inode.h"
#include "sdk/notify.h"
#include "sdk/render.h"

class ClassDesc;

/// A viewport with its camera.
class ViewExp {
public:
    virtual ~ViewExp() = default;
    virtual INode* GetViewCamera() = 0; ///< null in a free view
};

// Kinds of system log entries.
inline constexpr int SYSLOG_DEBUG = 8, SYSLOG_INFO = 4, SYSLOG_WARN = 6, SYSLOG_ERROR = 7;

/// The host's own log.
class LogSys {
public:
    virtual ~LogSys() = default;
    virtual void LogEntry(int type, bool dialogue, const char* title, const char* text) = 0;
};

enum MessageBoxKind { MB_WARNING = 1, MB_ERROR = 2, MB_QUESTION = 3, MB_INFORMATION = 4 };

/// The core interface.
class Interface {
public:
    virtual ~Interface() = default;
    virtual TimeValue GetTime() = 0;
    virtual void SetTime(TimeValue t) = 0;
    virtual int GetTicksPerFrame() = 0;
    virtual int GetFrameRate() = 0;
    virtual Interval GetAnimRange() = 0;
    virtual uint32_t VersionWord() = 0; ///< release in the upper 16 bits
    virtual int ApplicationID() = 0;    ///< 2 for the architectural edition

    virtual INode* GetRootNode() = 0;
    virtual INode* GetINodeByName(const char* name) = 0;

    virtual int NumAtmospheric() = 0;
    virtual Atmospheric* GetAtmospheric(int i) = 0;
    virtual void AddAtmosphere(Atmospheric* a) = 0;
    virtual void DeleteAtmosphere(int i) = 0;

    virtual ViewExp* GetActiveViewport() = 0;
    virtual void ReleaseViewport(ViewExp*) = 0;
    virtual Renderer* GetCurrentRenderer() = 0;
    virtual const RendParams& GetRendParams() = 0;
    virtual Color GetBackGround(TimeValue t, Interval& valid) = 0;
    virtual Texmap* GetEnvironmentMap() = 0;
    virtual Color GetLightTint(TimeValue t) { return {1, 1, 1}; }
    virtual Color GetAmbient(TimeValue t, Interval& valid) = 0;
    /// True when the user asked the running render to stop. Cheap; any thread.
    virtual bool CheckForRenderAbort() = 0;
    /// The same as a flag that strand loops can look at without a call. Lives as long as the host.
    virtual const std::atomic<bool>& RenderAbortFlag() = 0;
    /// Progress of the running render, for effects that work long inside it; null when nobody watches.
    virtual RendProgressCallback* GetRenderProgress() { return nullptr; }

    /// True when no dialog may be shown.
    virtual bool GetQuietMode() = 0;
    virtual LogSys* Log() = 0;
    /// Shows a message box; true only for Yes. The in-memory realisation records the text and answers from a script.
    virtual bool MessageBox(const char* text, const char* title, MessageBoxKind kind) = 0;

    /// An integer that a script expression gives; false when it fails or gives another type.
    virtual bool EvalScriptInt(const char* expression, int& value) = 0;
    virtual bool EvalScriptFloat(const char* expression, float& value) = 0;

    // As the functions of the same names (notify.h).
    virtual void RegisterNotification(NOTIFYPROC proc, void* param, int code) = 0;
    virtual void UnRegisterNotification(NOTIFYPROC proc, void* param, int code) = 0;
    virtual void BroadcastNotification(int code, void* callParam = nullptr) = 0;
    virtual void RedrawViews(TimeValue t) = 0;

    /// Class lookup among the host's and all plug-ins' classes; null when unknown.
    virtual ClassDesc* FindClass(SClass_ID sid, Class_ID id) = 0;
    /// Materials and maps of the scene by name (for files that name a map).
    virtual Texmap* FindTexmapByName(const char* name) = 0;
};

/// The running host; null when the library runs without one.
Interface* GetCOREInterface();
