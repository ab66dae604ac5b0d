#pragma once
// Class descriptors of classes with one parameter block.

#include <utility>
#include <vector>

#include "core/host_classes.h"
#include "core/param_builder.h"

namespace host {

/// The descriptor of a class that `new T` makes and whose parameter block stands in slot 0.
template <class T>
class BlockClassDesc : public SimpleClassDesc<T, ClassDesc2> {
public:
    BlockClassDesc(const char* name, const char* internalName, SClass_ID sid, Class_ID id, std::vector<ParamDef> params)
        : SimpleClassDesc<T, ClassDesc2>(name, sid, id), internalName_(internalName) {
        block_.intName = std::string(internalName) + "Params";
        block_.title = name;
        block_.classDesc = this;
        block_.flags = P_AUTO_CONSTRUCT;
        block_.params = std::move(params);
        this->AddParamBlockDesc(&block_);
    }
    const char* InternalName() override { return internalName_; }

private:
    const char* internalName_;
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
