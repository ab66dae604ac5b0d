#pragma once
// The material of hair that has none of its own: one base colour, a grey highlight.

#include "sdk/mesh.h"
#include "sdk/mtl.h"

inline constexpr Class_ID DUMMTL_CLASS_ID{0x10707f49, 0x040f5940};

/// "Hair Default". Not animatable; shades from any number of threads at once.
class DumMtl : public Mtl {
public:
    /// `useVertexColor`: the base colour is the shade context's vertex colour instead of `diffuse`.
    DumMtl(const Point3& diffuse, bool useVertexColor);
    ~DumMtl() override { DeleteAllRefs(); }

    /// Colour = (0.3 ambient + diffuse light) x base colour + highlight; opaque. In shadow mode black and clear.
    void Shade(ShadeContext& sc) override;
    Color GetDiffuse(int = 0, bool = false) override { return Color(diffuse_); }
    uint32_t Requirements(int) override { return MTLREQ_UV; }
    bool UsesVertexColor() const { return useVertexColor_; }

    Class_ID ClassID() override { return DUMMTL_CLASS_ID; }
    void GetClassName(TSTR& s) override;
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? slot_ : nullptr; }
    void SetReference(int i, RefTargetHandle target) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    Point3 diffuse_;
    bool useVertexColor_;
    Color specular_{0.5f, 0.5f, 0.5f};
    float shininess_;
    RefTargetHandle slot_ = nullptr; ///< kept for others, of no meaning here
};
