#pragma once
// The noise map.

#include "materials/blend_map.h"

namespace host {

// Parameters of the noise map, beside MapCoordParam and MapOutputParam.
enum NoiseParam : ParamID {
    kNoiseColor1,
    kNoiseColor2,
    kNoiseType,   ///< NoiseType
    kNoiseSize,   ///< length of a wave in units of the coordinates, above 0
    kNoiseLevels, ///< octaves of fractal noise and turbulence, 1..10; a fraction adds part of the next
    kNoiseLow,    ///< noise at or below this gives the first colour, 0..1
    kNoiseHigh,   ///< noise at or above this gives the second colour, 0..1
    kNoisePhase,  ///< fourth coordinate: change it over time and the pattern boils
    kNoiseMap1,   ///< in place of the first colour
    kNoiseMap2,
};

enum NoiseType {
    kNoiseRegular,    ///< n / 2 + 1/2, n being the host's four-dimensional noise
    kNoiseFractal,    ///< the same of the mean of octaves, each of half the size and weight of the one before
    kNoiseTurbulence, ///< that mean of the octaves' absolute values
};

/// Solid noise over the three coordinates, mixed from two colours or the maps in their places.
class NoiseMap : public BlendMap {
public:
    NoiseMap();
    ~NoiseMap() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return NOISE_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Noise"; }
    RefTargetHandle Clone(RemapDir& remap) override;
    /// The noise at a point of the map before thresholds: 0..1 (a little more for rare points of the regular type).
    float ValueAt(const Point3& at) const;

private:
    InputBlend BlendAt(const MapPoint& p) const override;
    float Grain() const override { return size_ / 64.0f; }
    void ReadParams(IParamBlock2& block) override;

    int type_ = kNoiseRegular;
    float size_ = 1, levels_ = 3, low_ = 0, high_ = 1, phase_ = 0;
};

ClassDesc* NoiseMapDesc();

} // namespace host
