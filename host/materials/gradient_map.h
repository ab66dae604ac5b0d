#pragma once
// The gradient ramp map.

#include <array>

#include "materials/blend_map.h"

namespace host {

// Parameters of the gradient ramp, beside MapCoordParam and MapOutputParam.
enum GradientParam : ParamID {
    kGradientType,          ///< GradientType
    kGradientInterpolation, ///< GradientInterpolation
    kGradientWrap,          ///< MapWrap of u and v
    kGradientCount,         ///< keys in use
    kGradientPosition = 20, ///< of key i: kGradientPosition + i, 0..1
    kGradientColor = 60,    ///< of key i: kGradientColor + i
    kGradientMap = 140,     ///< in place of the colour of key i: kGradientMap + i
};

enum GradientType {
    kGradientLinear, ///< along u
    kGradientRadial, ///< by the distance from (0.5, 0.5): 1 at distance 0.5
};
enum GradientInterpolation {
    kGradientStraight,
    kGradientSmooth, ///< 3s^2 - 2s^3 between keys
    kGradientSteps,  ///< every key's colour up to the next key
};

/// Colours at places between 0 and 1 and what lies between them. Before the first key its colour, after the last key
/// its colour; of keys at one place the last one counts from there on. Maps may take the colours' places.
class GradientMap : public BlendMap {
public:
    static constexpr int kMostKeys = 32;

    GradientMap();
    ~GradientMap() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return GRADIENT_RAMP_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Gradient Ramp"; }
    RefTargetHandle Clone(RemapDir& remap) override;
    /// The ramp's colour at a place, without maps.
    Color ColorAt(float place) const;

private:
    struct Key {
        float position = 0;
        int input = 0;
    };
    InputBlend BlendAt(const MapPoint& p) const override;
    InputBlend BlendOf(float place) const;
    void ReadParams(IParamBlock2& block) override;

    std::array<Key, kMostKeys> keys_; ///< by position
    int count_ = 0, type_ = kGradientLinear, interpolation_ = kGradientStraight, wrap_ = 0;
};

ClassDesc* GradientMapDesc();

} // namespace host
