#pragma once
// Class descriptors and the plug-in's entry points.

#include <vector>

#include "sdk/iparamb2.h"
#include "sdk/ref.h"

/// What the host asks about a plug-in class.
class ClassDesc {
public:
    virtual ~ClassDesc() = default;
    virtual int IsPublic() = 0;
    /// A new object of the class; null when it cannot be made.
    virtual void* Create(bool loading = false) = 0;
    virtual int BeginCreate(class Interface*) { return 0; }
    virtual int EndCreate(class Interface*) { return 0; }
    virtual const char* ClassName() = 0;
    virtual SClass_ID SuperClassID() = 0;
    virtual Class_ID ClassID() = 0;
    virtual const char* Category() = 0;
    virtual bool OkToCreate(class Interface*) { return true; }
    virtual bool HasClassParams() { return false; }
    virtual void EditClassParams(void* window) {}
    virtual void ResetClassParams(bool fileReset) {}
    virtual int NumActionTables() { return 0; }
    virtual bool IsManipulator() { return false; }
    virtual bool NeedsToSave() { return false; }
    virtual IOResult Save(ISave*) { return IO_OK; }
    virtual IOResult Load(ILoad*) { return IO_OK; }
    virtual uint32_t InitialRollupPageState() { return 0x7fffffff; }
    virtual const char* InternalName() { return nullptr; }
    virtual void* HInstance() { return nullptr; }
};

/// A class with parameter blocks: its descriptor lists their descriptions.
class ClassDesc2 : public ClassDesc {
public:
    void AddParamBlockDesc(ParamBlockDesc2* desc) { descs_.push_back(desc); }
    int NumParamBlockDescs() const { return int(descs_.size()); }
    ParamBlockDesc2* GetParamBlockDesc(int i) const { return descs_[size_t(i)]; }
    ParamBlockDesc2* GetParamBlockDescByID(BlockID id) const {
        for (ParamBlockDesc2* d : descs_)
            if (d->id == id) return d;
        return nullptr;
    }
    /// Builds every block flagged P_AUTO_CONSTRUCT and stores it in the owner's slot `refno`.
    void MakeAutoParamBlocks(ReferenceMaker* owner) {
        for (ParamBlockDesc2* d : descs_)
            if (d->flags & P_AUTO_CONSTRUCT) owner->ReplaceReference(d->refno, CreateParameterBlock2(d, owner));
    }

private:
    std::vector<ParamBlockDesc2*> descs_;
};

// The entry points, by name.
using LibDescriptionFn = const char* (*)();
using LibNumberClassesFn = int (*)();
using LibClassDescFn = ClassDesc* (*)(int);
using LibVersionFn = uint32_t (*)();
using CanAutoDeferFn = uint32_t (*)();

/// Version word of this interface: release 13900, API number 0x25, revision 0.
inline constexpr uint32_t SDK_VERSION_WORD = 0x364C2500;
