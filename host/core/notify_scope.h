#pragma once
// A pair of notifications around a piece of work.

#include "core/core.h"

namespace host {

/// Tells `before` at once and `after` at the scope's end, however that is reached.
class NotifyScope {
public:
    NotifyScope(Core& core, int before, int after, void* callParam = nullptr)
        : core_(core), after_(after), callParam_(callParam) {
        core_.BroadcastNotification(before, callParam_);
    }
    ~NotifyScope() { core_.BroadcastNotification(after_, callParam_); }
    NotifyScope(const NotifyScope&) = delete;
    NotifyScope& operator=(const NotifyScope&) = delete;
    /// Another code for the end.
    void SetAfter(int code) { after_ = code; }

private:
    Core& core_;
    int after_;
    void* callParam_;
};

} // namespace host
