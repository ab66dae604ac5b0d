#pragma once
// Progress of long operations, on two levels: a task made of objects, and an object made of steps.

#include <string>

/// Whoever works calls it; whoever shows it implements it. One call at a time, from any thread; what follows a call of
/// SetObject speaks of that object.
class IProgressIndicator {
public:
    virtual ~IProgressIndicator() = default;
    /// Opens what is shown. False when there is nothing to open.
    virtual bool Start() { return false; }
    virtual bool End() { return false; }
    /// A task of so many objects begins.
    virtual void SetTask(const std::string& name, int objectCount) = 0;
    /// The task has reached an object, counted from 0.
    virtual void SetTaskProgress(int objectIndex) = 0;
    /// An object of so many steps begins.
    virtual void SetObject(const std::string& name, int stepTotal) = 0;
    virtual void SetObjectProgress(int step) = 0;
    /// Nothing is being done.
    virtual void SetIdle() { SetTask("Idle", 0); }
    /// True once the user asked to stop.
    virtual bool IsCancelled() { return false; }
    virtual void Refresh() {}

protected:
    // What the calls said.
    std::string taskName_, objectName_;
    int objectCount_ = 0, objectIndex_ = 0;
    int stepTotal_ = 0, step_ = 0;

    void StoreTask(const std::string& name, int objectCount) {
        taskName_ = name;
        objectName_.clear();
        objectCount_ = objectCount;
        objectIndex_ = stepTotal_ = step_ = 0;
    }
    void StoreObject(const std::string& name, int stepTotal) {
        objectName_ = name;
        stepTotal_ = stepTotal;
        step_ = 0;
    }
};
