// Notifications: the list of those who listen, and the way to the current host.

#include "sdk/notify.h"

#include <algorithm>

#include "core/core.h"

bool RegisterNotification(NOTIFYPROC proc, void* param, int code) {
    Interface* const host = GetCOREInterface();
    if (host && proc) host->RegisterNotification(proc, param, code);
    return host && proc;
}

void UnRegisterNotification(NOTIFYPROC proc, void* param, int code) {
    if (Interface* const host = GetCOREInterface()) host->UnRegisterNotification(proc, param, code);
}

void BroadcastNotification(int code, void* callParam) {
    if (Interface* const host = GetCOREInterface()) host->BroadcastNotification(code, callParam);
}

namespace host {

void Core::RegisterNotification(NOTIFYPROC proc, void* param, int code) {
    if (proc) notifications_.push_back({proc, param, code, ++lastRegistration_});
}

void Core::UnRegisterNotification(NOTIFYPROC proc, void* param, int code) {
    std::erase_if(notifications_,
                  [&](const Registration& r) { return r.proc == proc && r.param == param && r.code == code; });
}

void Core::BroadcastNotification(int code, void* callParam) {
    // A callback may take itself or others off the list, or add some. Numbers only grow along the list.
    const uint64_t last = lastRegistration_;
    uint64_t told = 0;
    for (;;) {
        const auto next = std::find_if(notifications_.begin(), notifications_.end(), [&](const Registration& r) {
            return r.number > told && r.number <= last && r.code == code;
        });
        if (next == notifications_.end()) return;
        told = next->number;
        const Registration r = *next;
        r.proc(r.param, code, callParam);
    }
}

} // namespace host
