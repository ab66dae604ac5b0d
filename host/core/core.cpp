// The running host: lifetime, time, settings, messages.

#include "core/core.h"

#include <algorithm>

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
    owner_.DeleteAll();
    refs_.DeleteAllRefs();
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
}

bool Core::SetFrameRate(int fps) {
    if (fps < 1 || fps > TIME_TICKSPERSEC) return false;
    frameRate_ = fps;
    return true;
}

bool Core::SetAnimRange(const Interval& range) {
    if (range.Empty()) return false;
    animRange_ = range;
    return true;
}

Color Core::GetBackGround(TimeValue t, Interval& valid) {
    return refs_.ColorAt(SceneRefs::kBackground, background_, t, valid);
}

void Core::SetBackGround(const Color& c) {
    background_ = c;
    refs_.SetColorController(SceneRefs::kBackground, nullptr);
}

Color Core::GetAmbient(TimeValue t, Interval& valid) {
    return refs_.ColorAt(SceneRefs::kAmbient, ambient_, t, valid);
}

void Core::SetAmbient(const Color& c) {
    ambient_ = c;
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

void Core::RegisterNotification(NotifyProc proc, void* param, int code) {
    if (proc) notifications_.push_back({proc, param, code});
}

void Core::UnRegisterNotification(NotifyProc proc, void* param, int code) {
    std::erase(notifications_, Registration{proc, param, code});
}

void Core::BroadcastNotification(int code, void* callParam) {
    // A callback may take itself or others off the list.
    const auto all = notifications_;
    for (const Registration& r : all)
        if (r.code == code && std::find(notifications_.begin(), notifications_.end(), r) != notifications_.end())
            r.proc(r.param, code, callParam);
}

} // namespace host
