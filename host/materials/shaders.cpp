#include "materials/shaders.h"

#include <algorithm>
#include <cmath>

#include "core/host_classes.h"

namespace host {

ClassDesc* BlinnShaderDesc() {
    static SimpleClassDesc<BlinnShader> desc("Blinn", SHADER_CLASS_ID, BLINN_SHADER_CLASS_ID);
    return &desc;
}

ClassDesc* PhongShaderDesc() {
    static SimpleClassDesc<PhongShader> desc("Phong", SHADER_CLASS_ID, PHONG_SHADER_CLASS_ID);
    return &desc;
}

float BlinnShader::HighlightCosine(const Point3& n, const Point3& toLight, const Point3& v) const {
    return DotProd(n, Normalize(toLight - v));
}

float PhongShader::HighlightCosine(const Point3& n, const Point3& toLight, const Point3& v) const {
    return DotProd(v - n * (2.0f * DotProd(v, n)), toLight);
}

/// Adds one light's share to the three illuminations.
inline void LambertShader::AddLight(ShadeContext& sc, LightDesc& light, const Point3& n, float exponent,
                                    IllumParams& ip) const {
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
    const float c = HighlightCosine(n, toLight, sc.V());
    if (c > 0.0f) ip.specIllumOut += color * (ip.specLevel * std::pow(c, exponent));
}

void LambertShader::Illum(ShadeContext& sc, IllumParams& ip) {
    const Point3 n = sc.Normal();
    const float exponent = ip.specLevel > 0.0f ? std::exp2(10.0f * ip.glossiness) : 1.0f;
    ip.ambIllumOut = sc.ambientLight;
    ip.diffIllumOut = ip.specIllumOut = Color();
    for (int i = 0; i < sc.nLights; ++i)
        if (LightDesc* const light = sc.Light(i)) AddLight(sc, *light, n, exponent, ip);
    ip.ambIllumOut = ip.ambIllumOut * ip.ambient;
    ip.diffIllumOut = ip.diffIllumOut * ip.diffuse;
    ip.specIllumOut = ip.specIllumOut * ip.specular;
    ip.selfIllumOut = ip.selfIllum;
    if (!ip.selfIllumColorOn) {
        // What shines by itself does not also reflect.
        const float own = std::clamp(Intens(ip.selfIllum), 0.0f, 1.0f);
        ip.selfIllumOut = ip.diffuse * own;
        ip.ambIllumOut *= 1.0f - own;
        ip.diffIllumOut *= 1.0f - own;
    }
    ip.finalAttenuation = Intens(ip.diffIllumOut);
    CombineComponents(sc, ip);
}

} // namespace host
