#pragma once
// Class descriptors of classes with one parameter block.

#include <utility>
#include <vector>

#include "core/param_builder.h"
#include "sdk/plugapi.h"

namespace host {

/// The descriptor of a class that `new T` makes and whose parameter block stands in slot 0.
template <class T>
class BlockClassDesc : public ClassDesc2 {
public:
    BlockClassDesc(const char* name, const char* internalName, SClass_ID sid, Class_ID id, std::vector<ParamDef> params)
        : name_(name), internalName_(internalName), sid_(sid), id_(id) {
        block_.intName = std::string(internalName) + "Params";
        block_.title = name;
        block_.classDesc = this;
        block_.flags = P_AUTO_CONSTRUCT;
        block_.params = std::move(params);
        AddParamBlockDesc(&block_);
    }
    int IsPublic() override { return 1; }
    void* Create(bool) override { return new T; }
    const char* ClassName() override { return name_; }
    SClass_ID SuperClassID() override { return sid_; }
    Class_ID ClassID() override { return id_; }
    const char* Category() override { return "Host"; }
    const char* InternalName() override { return internalName_; }

private:
    const char *name_, *internalName_;
    SClass_ID sid_;
    Class_ID id_;
    ParamBlockDesc2 block_;
};

/// Whole number with a range.
inline ParamDef IntParam(ParamID id, const char* name, int value, int low, int high) {
    ParamDef def = NamedParam(id, name, TYPE_INT, 0);
    def.def.i = value;
    def.hasRange = true;
    def.rangeLow = float(low);
    def.rangeHigh = float(high);
    return def;
}

} // namespace host
