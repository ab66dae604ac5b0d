#pragma once
// Undo and redo.

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "sdk/ref.h"

/// One change that can be taken back. Records are restored in the reverse order of their making, so each one finds the
/// scene as it left it. They refer to objects through MakerHandle and do nothing when those are gone.
class RestoreObj {
public:
    virtual ~RestoreObj() = default;
    /// Brings the old state back; with `isUndo` the present state is kept for Redo.
    virtual void Restore(int isUndo) = 0;
    virtual void Redo() = 0;
    /// The hold that this record belongs to was accepted.
    virtual void EndHold() {}
    virtual TSTR Description() { return "---"; }
};

/// Collects records between Begin and Accept or Cancel, and keeps the accepted ones for undo and redo. There is one,
/// theHold; it belongs to the thread that began, other threads see it closed.
class Hold {
public:
    /// Opens a hold. Holds nest: the records of an inner one join the outer one.
    void Begin();
    /// Closes the hold; the outermost one becomes an undo step of that name unless it recorded nothing. A new step
    /// drops everything that could be redone.
    void Accept(const TSTR& name);
    /// Takes back what was recorded since Begin and closes the hold.
    void Cancel();
    /// Takes back what was recorded since Begin; the hold stays open and empty.
    void Restore();
    /// Joins everything accepted until SuperAccept into one step. Nests.
    void SuperBegin();
    void SuperAccept(const TSTR& name);
    void SuperCancel();
    /// True when changes are to be recorded: a hold of this thread is open, not suspended, and nothing is being
    /// restored.
    bool Holding() const;
    /// Takes over a record; deletes it when no hold is open.
    void Put(RestoreObj* record);
    /// Stop and go on recording on this thread; pairs nest.
    void Suspend();
    void Resume();
    bool IsSuspended() const;
    /// True while Undo, Redo or Cancel work.
    bool RestoreOrRedoing() const { return restoring_; }
    /// Number of the innermost open hold: no other hold has it, and Restore changes it. With it an object can tell
    /// whether it has recorded itself in this hold already (HoldOnce).
    uint64_t Serial() const { return open_.empty() ? 0 : open_.back().serial; }

    // Steps. These answer false while a hold is open, and when there is nothing to do.
    bool Undo();
    bool Redo();
    int NumUndo() const { return int(undo_.size()); }
    int NumRedo() const { return int(redo_.size()); }
    /// Names, 0 being what Undo or Redo does next; empty when there is none.
    TSTR UndoName(int i = 0) const { return NameOf(undo_, i); }
    TSTR RedoName(int i = 0) const { return NameOf(redo_, i); }
    /// How many steps are kept, 0 for none; the oldest go first.
    void SetUndoLimit(int steps);
    int UndoLimit() const { return limit_; }
    /// Forgets all steps and what open holds recorded so far.
    void Flush();

private:
    using Records = std::vector<std::unique_ptr<RestoreObj>>;
    struct Level {
        Records records;
        uint64_t serial = 0;
    };
    struct Step {
        TSTR name;
        Records records;
    };
    class Quiet;
    static TSTR NameOf(const std::vector<Step>& steps, int i);
    void TakeBack(Records& records);
    void Commit(const TSTR& name, Records records);
    void Trim();
    bool Move(std::vector<Step>& from, std::vector<Step>& to, bool undo);

    std::vector<Level> open_;
    std::vector<Level> super_;
    std::vector<Step> undo_, redo_; ///< the next one last
    std::atomic<int> depth_{0};
    std::thread::id thread_;
    uint64_t lastSerial_ = 0;
    int limit_ = 100;
    bool restoring_ = false;
};

extern Hold theHold;

/// Suspends recording on this thread for a scope.
class HoldSuspend {
public:
    HoldSuspend() { theHold.Suspend(); }
    ~HoldSuspend() { theHold.Resume(); }
    HoldSuspend(const HoldSuspend&) = delete;
    HoldSuspend& operator=(const HoldSuspend&) = delete;
};

/// True when a record is wanted and `mark`, a member of the object that starts as 0, does not show one in the innermost
/// hold yet. For records that keep an object's whole state.
bool HoldOnce(uint64_t& mark);

/// A record whose undo and redo are the same: what it keeps changes places with what is there.
class ExchangeRestore : public RestoreObj {
public:
    void Restore(int) final { Exchange(); }
    void Redo() final { Exchange(); }

protected:
    virtual void Exchange() = 0;
};

/// Exchanges a plain value with the one it had. Afterwards `told` is called, or the owner's dependents hear of a
/// change.
template <class T>
class ValueRestore : public ExchangeRestore {
public:
    using Told = void (*)(ReferenceMaker* owner);
    ValueRestore(ReferenceMaker* owner, T& place, Told told)
        : owner_(owner), place_(place), saved_(place), told_(told) {}

private:
    void Exchange() override {
        if (!owner_.Maker()) return;
        std::swap(place_, saved_);
        if (told_)
            told_(owner_.Maker());
        else if (const RefTargetHandle target = owner_.Target())
            target->NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    }

    MakerHandle owner_;
    T& place_; ///< a member of the owner, or of something that lives as long
    T saved_;
    Told told_;
};

/// Records the value of `place`, about to be changed, when a hold is open.
template <class T>
void HoldValue(ReferenceMaker* owner, T& place, typename ValueRestore<T>::Told told = nullptr) {
    if (theHold.Holding()) theHold.Put(new ValueRestore<T>(owner, place, told));
}

/// An empty slot came into a list of references or went out of it. What the slot held is a RefRestore of its own.
class SlotRestore : public RestoreObj {
public:
    /// `present`: the slot is there now. `change(true)` puts an empty slot in, `change(false)` takes it out.
    SlotRestore(ReferenceMaker* maker, bool present, std::function<void(bool)> change)
        : maker_(maker), present_(present), change_(std::move(change)) {}
    void Restore(int) override { Turn(); }
    void Redo() override { Turn(); }
    TSTR Description() override { return "List"; }

private:
    void Turn() {
        if (!maker_.Maker()) return;
        present_ = !present_;
        change_(present_);
    }

    MakerHandle maker_;
    bool present_;
    std::function<void(bool)> change_;
};

/// Joins the records made in a scope, when a hold is open, so that a failed edit can take them back by itself.
class HoldGroup {
public:
    HoldGroup() : open_(theHold.Holding()) {
        if (open_) theHold.Begin();
    }
    ~HoldGroup() { Close(true); }
    HoldGroup(const HoldGroup&) = delete;
    HoldGroup& operator=(const HoldGroup&) = delete;
    /// True when records were taken back; without a hold there are none, and the caller undoes its edit itself.
    bool TakeBack() { return Close(false); }

private:
    bool Close(bool keep) {
        if (!open_) return false;
        open_ = false;
        if (keep)
            theHold.Accept("");
        else
            theHold.Cancel();
        return true;
    }
    bool open_;
};
