#pragma once
// What happens to a map's colours on their way out.

#include "sdk/color.h"
#include "sdk/iparamb2.h"

namespace host {

// Parameters that all maps with adjustable output share.
enum MapOutputParam : ParamID {
    kOutInvert = 120,
    kOutClamp,  ///< colours and alpha stay inside 0..1
    kOutLevel,  ///< factor of the colours
    kOutOffset, ///< added to the colours
    kOutAmount, ///< factor of colours and alpha, after the offset
};

/// out = ((invert ? 1 - colour : colour) x level + offset) x amount, then clamped if asked for; alpha x amount.
struct MapOutput {
    bool invert = false, clamp = false;
    float level = 1, offset = 0, amount = 1;
    static std::vector<ParamDef> Params();
    void Read(IParamBlock2& block, TimeValue t);
    AColor Apply(AColor c) const;
    /// The same for a number.
    float Apply(float v) const;
    /// How much a number's change makes of it, where nothing is clamped.
    float Slope() const { return (invert ? -level : level) * amount; }
};

} // namespace host
