#pragma once
// The host's lights at render time.

#include <memory>

#include "core/light.h"
#include "render/render_context.h"
#include "sdk/atmos.h"

namespace host {

/// An omni, spot or direct light prepared for a view.
/// Cross section: between the hotspot's and the falloff's edge the light fades by 3s^2 - 2s^3, s running from 0 at the
/// falloff to 1 at the hotspot: linearly in the cosine of the angle (round spot), the tangent of the larger of the
/// angles along width and height (rectangular spot), or the distance from the axis (direct). A direct light's cylinder
/// is endless both ways. Distance (along the axis for direct lights): near and far attenuation fade by 3s^2 - 2s^3
/// between their start and end; decay is start / distance, or its square, beyond its start. Without these lights do not
/// fade. Shadows, when the light casts them and the context asks (`shadow`): the light that geometry lets through times
/// what the light's own shadow type answers. Of what is missing the shadow multiplier's share is replaced by the shadow
/// colour (times cone and fading).
class HostLightDesc : public ObjLightDesc {
public:
    HostLightDesc(Light* light, INode* node);
    int Update(TimeValue t, RenderGlobalContext* rgc) override;
    void UpdateViewDepParams(const Matrix3& worldToCam) override;
    /// False when the point gets no light: out of the cone, turned away (the cosine against `normal`, which need not be
    /// unit, is not above 0), or in full shadow. An ambient-only light knows neither shadow nor normal: cosine and
    /// coefficient are 1.
    bool Illuminate(ShadeContext& sc, const Point3& normal, Color& color, Point3& dir, float& dot_nl,
                    float& diffuseCoef) override;
    using ObjLightDesc::Illuminate;
    Point3 LightPosition() override { return position_; }

private:
    bool ToLight(const Point3& p, Point3& dir, float& distance, float& share) const;
    float CrossSection(const Point3& way, const Point3& dir) const;
    float Fading(float distance) const;
    Color Missing(ShadeContext& sc, const Point3& p, const Point3& dir, float distance);

    Light* light_;
    std::unique_ptr<ShadowGenerator> generator_;
    RenderContext* render_ = nullptr; ///< null in another renderer's pictures: no traced shadows
    Color color_;                     ///< with multiplier and tint
    Color shadowColor_;
    Point3 position_, axis_; ///< camera space; the unit axis points from the lit side to the light
    Point3 acrossWidth_, acrossHeight_;
    float shadowMultiplier_ = 1, shadowBias_ = 0;
    float full_ = 0, none_ = 0, slope_ = 0; ///< edges of hotspot and falloff, as cosines, tangents or distances
    bool fades_ = false;                    ///< with distance
};

} // namespace host
