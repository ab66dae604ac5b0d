#pragma once
// Parameters of the host's own classes by name.

#include <stdexcept>
#include <string>

#include "sdk/iparamb2.h"

namespace host {

/// Sets parameters of an object's first block by their internal names. A name that the block does not have is a mistake
/// of the program and throws std::logic_error.
class BlockSetter {
public:
    explicit BlockSetter(Animatable* object) : block_(object->GetParamBlock(0)) {}
    /// False when the block does not take the value.
    template <class T>
    bool operator()(const char* name, const T& value) const {
        for (const ParamDef& def : block_->GetDesc()->params)
            if (def.intName == name) return block_->SetValue(def.id, 0, value);
        throw std::logic_error(block_->GetDesc()->intName + " has no parameter " + name);
    }

private:
    IParamBlock2* block_;
};

} // namespace host
