#pragma once
// The shader that a standard material has by itself.

#include "sdk/mtl.h"

namespace host {

/// Lambert's diffuse light and Blinn's highlight: specLevel x (N.H)^(2^(10 x glossiness)), H half way between light and
/// viewer. Final colour: opacity x (ambient + diffuse + self-illumination) + highlight.
class BlinnShader : public Shader {
public:
    void Illum(ShadeContext& sc, IllumParams& ip) override;
};

} // namespace host
