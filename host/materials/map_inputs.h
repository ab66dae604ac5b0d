#pragma once
// Colours of maps that other maps may stand for.

#include <string>
#include <utility>
#include <vector>

#include "core/param_builder.h"
#include "sdk/mtl.h"

namespace host {

/// The parameters of an input: its colour, and the map that takes the colour's place.
struct InputParams {
    ParamID color, map;
};

/// The inputs of a map as values: colours, and maps in place of some of them.
class MapInputs {
public:
    /// All inputs that the map has, in order.
    explicit MapInputs(std::vector<InputParams> params) : params_(std::move(params)), inputs_(params_.size()) {}
    int Count() const { return int(inputs_.size()); }
    /// The parameter of a map in place of a colour.
    static ParamDef MapParam(ParamID id, const std::string& name) {
        return NamedParam(id, name.c_str(), TYPE_TEXMAP, 0);
    }

    // Of the block that has the parameters; numbers out of range are no input.
    void Read(IParamBlock2& block, TimeValue t);
    void Update(TimeValue t, Interval& valid);
    Texmap* Map(int i) const { return i >= 0 && i < Count() ? inputs_[size_t(i)].map : nullptr; }
    /// Refused when the input's map would contain the block's owner.
    void SetMap(IParamBlock2& block, int i, Texmap* map) const;

    // At a shading point; `i` must be an input.
    /// The input's own colour, whatever map it has.
    const Color& OwnColor(int i) const { return inputs_[size_t(i)].color; }
    AColor At(ShadeContext& sc, int i) const {
        const Input& input = inputs_[size_t(i)];
        return input.map ? input.map->EvalColor(sc) : AColor(input.color);
    }
    float MonoAt(ShadeContext& sc, int i) const {
        const Input& input = inputs_[size_t(i)];
        return input.map ? input.map->EvalMono(sc) : Intens(input.color);
    }
    /// The relief of the input's map; flat without one.
    Point3 ReliefAt(ShadeContext& sc, int i) const {
        Texmap* const map = inputs_[size_t(i)].map;
        return map ? map->EvalNormalPerturb(sc) : Point3();
    }

private:
    struct Input {
        Color color;
        Texmap* map = nullptr;
    };
    std::vector<InputParams> params_;
    std::vector<Input> inputs_;
};

} // namespace host
