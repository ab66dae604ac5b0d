#pragma once
// The running host: one scene and everything a plug-in can ask for.

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "core/class_directory.h"
#include "core/filter_queue.h"
#include "core/host_log.h"
#include "core/memory_dialogs.h"
#include "core/message_boxes.h"
#include "core/node.h"
#include "core/plugin_loader.h"
#include "core/ref_list.h"
#include "core/scene_refs.h"
#include "core/target_owner.h"
#include "sdk/core.h"
#include "sdk/hold.h"

namespace host {

/// The core interface with its scene. Several may exist; GetCOREInterface() answers the current one.
/// Edits are undoable while theHold is open; its steps end with the scene (ResetScene, destructor).
/// All operations belong to the main thread, except CheckForRenderAbort, RequestRenderAbort, GetTime and the log.
class Core : public Interface {
public:
    Core();
    /// Deletes the scene, then unloads the plug-ins. No longer current afterwards.
    ~Core() override;
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    /// Makes a core the current one for a scope, the former one afterwards.
    class Scope {
    public:
        explicit Scope(Core& core);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        Interface* former_;
    };
    /// Makes this core the current one until it dies.
    void MakeCurrent();

    // Time.
    TimeValue GetTime() override { return time_.load(std::memory_order_relaxed); }
    /// Sets the current time and tells the time callbacks.
    void SetTime(TimeValue t) override;
    int GetTicksPerFrame() override { return TIME_TICKSPERSEC / frameRate_; }
    int GetFrameRate() override { return frameRate_; }
    /// Frames a second, 1..4800; false otherwise. The animation range stays in ticks.
    bool SetFrameRate(int fps);
    Interval GetAnimRange() override { return animRange_; }
    /// False for an empty range.
    bool SetAnimRange(const Interval& range);
    void AddTimeCallback(std::function<void(TimeValue)> f) { timeCallbacks_.push_back(std::move(f)); }
    uint32_t VersionWord() override { return SDK_VERSION_WORD; }
    int ApplicationID() override { return applicationID_; }
    void SetApplicationID(int id) { applicationID_ = id; }

    // Nodes and ownership.
    Node* GetRootNode() override { return root_; }
    /// The first node of that name below the root, in the order of the hierarchy; null when there is none.
    INode* GetINodeByName(const char* name) override;
    /// A node below `parent` (null: the root), owned by the scene; the scene takes over `object` too.
    Node* CreateNode(const std::string& name, Object* object = nullptr, Node* parent = nullptr);
    /// Deletes a node of this scene; its children go to its parent. The root stays.
    void DeleteNode(INode* node);
    /// Clones nodes of this scene, each below its original's parent or, when that is cloned along, below the parent's
    /// clone; references among the nodes go from clone to clone. Null where a node is not of this scene.
    std::vector<Node*> CloneNodes(const std::vector<INode*>& nodes);
    /// All nodes below the root, parents before children.
    std::vector<Node*> AllNodes();
    /// Hands an object to the scene, which deletes it at its end unless it died before. Returns the object.
    template <class T>
    T* Adopt(T* target) {
        HoldAdoption(target);
        owner_.Adopt(target);
        return target;
    }
    TargetOwner& Owner() { return owner_; }
    /// A new object of a registered class, adopted by the scene; null when the class is unknown, cannot be made, or
    /// makes no reference target (image filters).
    ReferenceTarget* CreateInstance(SClass_ID sid, Class_ID id);
    /// Deletes the scene's objects and forgets all undo steps; settings, classes and plug-ins stay.
    void ResetScene();

    // Environment and render settings.
    int NumAtmospheric() override { return atmospherics_.Count(); }
    Atmospheric* GetAtmospheric(int i) override { return atmospherics_.At(i); }
    /// Null and effects already in the list are ignored. The list does not own.
    void AddAtmosphere(Atmospheric* a) override { atmospherics_.Add(a); }
    /// Takes effect `i` out of the list; deletes it when the scene owns it and nobody else refers to it.
    void DeleteAtmosphere(int i) override { DeleteFrom(atmospherics_, i); }
    /// The render effects in the order in which they work. The list does not own.
    const std::vector<Effect*>& Effects() const { return effects_.Items(); }
    void AddEffect(Effect* e) { effects_.Add(e); }
    /// As DeleteAtmosphere.
    void DeleteEffect(int i) { DeleteFrom(effects_, i); }
    /// The image filters, which work after the effects.
    FilterQueue& Filters() { return filters_; }
    Renderer* GetCurrentRenderer() override { return refs_.GetRenderer(); }
    void SetCurrentRenderer(Renderer* r) { refs_.ReplaceReference(SceneRefs::kRenderer, r); }
    const RendParams& GetRendParams() override { return rendParams_; }
    RendParams& RenderParams() { return rendParams_; }
    Color GetBackGround(TimeValue t, Interval& valid) override;
    void SetBackGround(const Color& c);
    bool SetBackGroundController(Control* c) { return refs_.SetColorController(SceneRefs::kBackground, c); }
    Texmap* GetEnvironmentMap() override { return refs_.GetEnvironment(); }
    void SetEnvironmentMap(Texmap* map);
    Color GetLightTint(TimeValue) override { return lightTint_; }
    void SetLightTint(const Color& c) { SetHeld(lightTint_, c); }
    Color GetAmbient(TimeValue t, Interval& valid) override;
    void SetAmbient(const Color& c);
    bool SetAmbientController(Control* c) { return refs_.SetColorController(SceneRefs::kAmbient, c); }

    // The active viewport: there is one; it looks through a camera node or freely (null).
    ViewExp* GetActiveViewport() override;
    void ReleaseViewport(ViewExp* view) override;
    void SetViewportCamera(INode* camera);
    /// Viewports given out and not yet released.
    int ViewportsInUse() const { return viewportsInUse_; }
    void RedrawViews(TimeValue) override { ++redraws_; }
    int Redraws() const { return redraws_; }

    // Cancelling; any thread, also a signal handler.
    bool CheckForRenderAbort() override { return abort_.load(std::memory_order_relaxed); }
    const std::atomic<bool>& RenderAbortFlag() override { return abort_; }
    void RequestRenderAbort() { abort_.store(true, std::memory_order_relaxed); }
    RendProgressCallback* GetRenderProgress() override { return renderProgress_; }
    /// Who is told how a render comes along; null for nobody.
    void SetRenderProgress(RendProgressCallback* progress) { renderProgress_ = progress; }
    void ClearRenderAbort() { abort_.store(false, std::memory_order_relaxed); }

    // What the user is told.
    bool GetQuietMode() override { return quiet_; }
    void SetQuietMode(bool on) { quiet_ = on; }
    HostLog* Log() override { return &log_; }
    /// In quiet mode the text goes to the log as one line and the answer is false.
    bool MessageBox(const char* text, const char* title, MessageBoxKind kind) override;
    MessageBoxes& Boxes() { return boxes_; }
    /// Null in quiet mode, and as long as nobody offers dialogs.
    IDialog* OpenDialog(int templateId, IDialogProc& proc) override {
        return dialogs_ && !quiet_ ? dialogs_->Open(templateId, proc) : nullptr;
    }
    void EnableMainWindow(bool on) override {
        if (dialogs_) dialogs_->EnableMainWindow(on);
    }
    /// Who makes dialogs; null for nobody. Must outlive the core or be taken out.
    void SetDialogs(DialogSource* dialogs) { dialogs_ = dialogs; }

    // Scripts: answers set beforehand, by expression, until a script engine is installed.
    bool EvalScriptInt(const char* expression, int& value) override;
    bool EvalScriptFloat(const char* expression, float& value) override;
    void SetScriptInt(const std::string& expression, int value) { scriptInts_[expression] = value; }
    void SetScriptFloat(const std::string& expression, float value) { scriptFloats_[expression] = value; }

    // Notifications.
    void RegisterNotification(NOTIFYPROC proc, void* param, int code) override;
    void UnRegisterNotification(NOTIFYPROC proc, void* param, int code) override;
    void BroadcastNotification(int code, void* callParam = nullptr) override;

    // Classes and plug-ins.
    ClassDirectory& Classes() { return classes_; }
    PluginLoader& Plugins() { return plugins_; }
    ClassDesc* FindClass(SClass_ID sid, Class_ID id) override { return classes_.Find(sid, id); }
    /// The first map of that name among the environment, the nodes' materials and what the scene owns.
    Texmap* FindTexmapByName(const char* name) override;

private:
    struct Registration {
        NOTIFYPROC proc;
        void* param;
        int code;
        uint64_t number; ///< in order of registration
    };
    /// Sets a value that undo brings back.
    template <class T>
    void SetHeld(T& place, const T& value, void (*told)(ReferenceMaker*) = nullptr) {
        HoldValue(&refs_, place, told);
        place = value;
    }
    void HoldAdoption(ReferenceTarget* target);
    template <class T>
    void DeleteFrom(RefList<T>& list, int i);

    class Viewport : public ViewExp {
    public:
        explicit Viewport(const SceneRefs& refs) : refs_(refs) {}
        INode* GetViewCamera() override { return refs_.GetCamera(); }

    private:
        const SceneRefs& refs_;
    };

    ClassDirectory classes_;
    PluginLoader plugins_{classes_}; ///< outlives every object whose code is in a plug-in
    TargetOwner owner_;
    SceneRefs refs_;
    RefList<Atmospheric> atmospherics_;
    RefList<Effect> effects_;
    FilterQueue filters_{classes_};
    Node* root_ = nullptr;
    Viewport viewport_{refs_};
    int viewportsInUse_ = 0, redraws_ = 0;

    std::atomic<TimeValue> time_{0};
    int frameRate_ = 30;
    Interval animRange_{0, 100 * TIME_TICKSPERSEC / 30};
    std::vector<std::function<void(TimeValue)>> timeCallbacks_;
    int applicationID_ = 0;
    RendParams rendParams_;
    Color background_, ambient_, lightTint_{1, 1, 1};
    std::atomic<bool> abort_{false};
    RendProgressCallback* renderProgress_ = nullptr;
    bool quiet_ = false;
    HostLog log_;
    MessageBoxes boxes_;
    DialogSource* dialogs_ = nullptr;
    std::map<std::string, int> scriptInts_;
    std::map<std::string, float> scriptFloats_;
    std::vector<Registration> notifications_;
    uint64_t lastRegistration_ = 0;
};

} // namespace host
