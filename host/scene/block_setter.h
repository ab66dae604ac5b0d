#pragma once
// Parameters of the host's own classes by name.

#include "sdk/iparamb2.h"

namespace host {

/// Sets parameters of an object's first block by their internal names; unknown names are ignored.
class BlockSetter {
public:
    explicit BlockSetter(Animatable* object) : block_(object->GetParamBlock(0)) {}
    template <class T>
    void operator()(const char* name, const T& value) const {
        for (const ParamDef& def : block_->GetDesc()->params)
            if (def.intName == name) block_->SetValue(def.id, 0, value);
    }

private:
    IParamBlock2* block_;
};

} // namespace host
