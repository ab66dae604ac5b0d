#pragma once
// Parameters of objects by name, as scenes and command lines set and show them.

#include <string>
#include <vector>

#include "scene/toml_value.h"
#include "sdk/core.h"
#include "sdk/iparamb2.h"

namespace host {

/// A parameter in its block.
struct ParamPlace {
    IParamBlock2* block = nullptr;
    const ParamDef* def = nullptr;
};

/// What values may name.
class SceneNames {
public:
    virtual ~SceneNames() = default;
    /// Both throw Error with the nearest names when there is none of that name.
    virtual INode* NodeNamed(const std::string& name) = 0;
    virtual Texmap* MapNamed(const std::string& name) = 0;
};

/// All parameters of the object's own blocks, in their order.
std::vector<ParamPlace> ListParams(Animatable* object);
/// Equal without regard to case, an underscore being a space.
bool SameParamName(const std::string& a, const std::string& b);
/// By internal name, else by script name. Throws Error when there is none (with the nearest names) or several have
/// that script name (with their internal names). `objectName` is for messages.
ParamPlace FindParam(Animatable* object, const std::string& objectName, const std::string& name);

/// Sets a parameter: numbers inside its range, colours and points as three numbers, times in frames, nodes and maps by
/// name, node lists as lists of names. Throws Error, without a place, saying what was expected.
void SetParam(const ParamPlace& place, const TomlValue& value, TimeValue t, int ticksPerFrame, SceneNames& names);

// For tables of parameters: the value at `t`, the default, the range, the type; "-" where there is none.
std::string ParamValueText(const ParamPlace& place, TimeValue t, int ticksPerFrame);
std::string ParamDefaultText(const ParamDef& def, int ticksPerFrame);
std::string ParamRangeText(const ParamDef& def);
const char* ParamTypeText(ParamType2 type);

} // namespace host
