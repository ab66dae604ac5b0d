#pragma once
// Objects whose points are made from other values.

#include <mutex>

#include "sdk/object.h"

namespace host {

/// `Base` (a TriObject or ShapeObject) whose mesh or shape is made when it is asked for and kept as long as it holds.
/// In a stack, modifiers work on a plain copy. Nodes that share the object may ask from several threads.
template <class Base>
class MadeObject : public Base {
public:
    ObjectState Eval(TimeValue t) override {
        Update(t);
        return {this, this->ObjectValidity(t)};
    }
    Object* PipelineCopy(TimeValue t) override {
        Update(t);
        return Base::PipelineCopy(t);
    }
    Object* ConvertToType(TimeValue t, Class_ID id) override {
        Update(t);
        return Base::ConvertToType(t, id);
    }

protected:
    /// Makes the mesh or shape at `t` and tells for which times it holds.
    virtual Interval Make(TimeValue t) = 0;
    /// Brings it to `t`.
    void Update(TimeValue t) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!made_.InInterval(t)) made_ = Make(t);
    }
    /// It is made anew when it is asked for the next time.
    void MakeAnew() {
        const std::lock_guard<std::mutex> lock(mutex_);
        made_ = NEVER;
    }

private:
    std::mutex mutex_;
    Interval made_ = NEVER;
};

} // namespace host
