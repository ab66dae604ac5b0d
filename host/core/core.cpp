// The running host: lifetime, time, settings, messages.

#include "core/core.h"

namespace {
std::atomic<Interface*> gCurrent{nullptr};
}

Interface* GetCOREInterface() {
    return gCurrent.load(std::memory_order_acquire);
}

namespace host {

Core::Core() {
    root_ = Adopt(new Node("Scene Root"));
    rendParams_.width = 640;
    rendParams_.height = 480;
}

Core::~Core() {
    // Destructors of plug-in objects may still ask for the core.
    Interface* const former = gCurrent.exchange(this);
    BroadcastNotification(NOTIFY_SYSTEM_SHUTDOWN);
    theHold.Flush();
    owner_.DeleteAll();
    refs_.DeleteAllRefs();
    atmospherics_.DeleteAllRefs();
    effects_.DeleteAllRefs();
    filters_.Clear();
    gCurrent.store(former == this ? nullptr : former, std::memory_order_release);
}

void Core::MakeCurrent() {
    gCurrent.store(this, std::memory_order_release);
}

Core::Scope::Scope(Core& core) : former_(gCurrent.exchange(&core)) {}

Core::Scope::~Scope() {
    gCurrent.store(former_, std::memory_order_release);
}

void Core::SetTime(TimeValue t) {
    time_.store(t, std::memory_order_relaxed);
    const auto callbacks = timeCallbacks_;
    for (const auto& f : callbacks) f(t);
    BroadcastNotification(NOTIFY_TIME_CHANGED, &t);
}

bool Core::SetFrameRate(int fps) {
    if (fps < 1 || fps > TIME_TICKSPERSEC) return false;
    SetHeld(frameRate_, fps);
    BroadcastNotification(NOTIFY_TIMEUNITS_CHANGED);
    return true;
}

bool Core::SetAnimRange(const Interval& range) {
    if (range.Empty()) return false;
    SetHeld(animRange_, range);
    BroadcastNotification(NOTIFY_ANIMATION_RANGE_CHANGED);
    return true;
}

Color Core::GetBackGround(TimeValue t, Interval& valid) {
    return refs_.ColorAt(SceneRefs::kBackground, background_, t, valid);
}

void Core::SetBackGround(const Color& c) {
    SetHeld(background_, c);
    refs_.SetColorController(SceneRefs::kBackground, nullptr);
}

Color Core::GetAmbient(TimeValue t, Interval& valid) {
    return refs_.ColorAt(SceneRefs::kAmbient, ambient_, t, valid);
}

void Core::SetAmbient(const Color& c) {
    SetHeld(ambient_, c);
    refs_.SetColorController(SceneRefs::kAmbient, nullptr);
}

void Core::SetEnvironmentMap(Texmap* map) {
    refs_.ReplaceReference(SceneRefs::kEnvironment, map);
}

ViewExp* Core::GetActiveViewport() {
    ++viewportsInUse_;
    return &viewport_;
}

void Core::ReleaseViewport(ViewExp* view) {
    if (view == &viewport_ && viewportsInUse_ > 0) --viewportsInUse_;
}

void Core::SetViewportCamera(INode* camera) {
    refs_.ReplaceReference(SceneRefs::kCamera, camera);
}

bool Core::MessageBox(const char* text, const char* title, MessageBoxKind kind) {
    if (!quiet_) return boxes_.Show(text ? text : "", title ? title : "", kind);
    const int type = kind == MB_WARNING ? SYSLOG_WARN : kind == MB_INFORMATION ? SYSLOG_INFO : SYSLOG_ERROR;
    log_.LogEntry(type, true, title, text);
    return false;
}

bool Core::EvalScriptInt(const char* expression, int& value) {
    const auto it = scriptInts_.find(expression ? expression : "");
    if (it == scriptInts_.end()) return false;
    value = it->second;
    return true;
}

bool Core::EvalScriptFloat(const char* expression, float& value) {
    const auto it = scriptFloats_.find(expression ? expression : "");
    if (it == scriptFloats_.end()) return false;
    value = it->second;
    return true;
}

} // namespace host
