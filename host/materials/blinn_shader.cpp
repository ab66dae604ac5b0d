#include "materials/blinn_shader.h"

#include <cmath>

namespace host {

namespace {

/// Adds one light's share to the three illuminations.
void AddLight(ShadeContext& sc, LightDesc& light, const Point3& n, float exponent, IllumParams& ip) {
    Color color;
    Point3 toLight;
    float cosine = 0, diffuse = 0;
    if (!light.Illuminate(sc, n, color, toLight, cosine, diffuse)) return;
    if (light.ambientOnly) {
        ip.ambIllumOut += color;
        return;
    }
    if (light.affectDiffuse) ip.diffIllumOut += color * diffuse;
    if (!light.affectSpecular || ip.specLevel <= 0.0f || cosine <= 0.0f) return;
    const float nh = DotProd(n, Normalize(toLight - sc.V()));
    if (nh > 0.0f) ip.specIllumOut += color * (ip.specLevel * std::pow(nh, exponent));
}

} // namespace

void BlinnShader::Illum(ShadeContext& sc, IllumParams& ip) {
    const Point3 n = sc.Normal();
    const float exponent = std::exp2(10.0f * ip.glossiness);
    ip.ambIllumOut = sc.ambientLight;
    ip.diffIllumOut = ip.specIllumOut = Color();
    for (int i = 0; i < sc.nLights; ++i)
        if (LightDesc* const light = sc.Light(i)) AddLight(sc, *light, n, exponent, ip);
    ip.ambIllumOut = ip.ambIllumOut * ip.ambient;
    ip.diffIllumOut = ip.diffIllumOut * ip.diffuse;
    ip.specIllumOut = ip.specIllumOut * ip.specular;
    ip.selfIllumOut = ip.selfIllum;
    ip.finalC = ip.opacity * (ip.ambIllumOut + ip.diffIllumOut + ip.selfIllumOut) + ip.specIllumOut;
    const float clear = 1.0f - ip.opacity;
    ip.finalT = {clear, clear, clear};
}

} // namespace host
