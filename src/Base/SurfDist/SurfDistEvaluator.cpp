#include "Base/SurfDist/SurfDistEvaluator.h"

#include <algorithm>
#include <atomic>
#include <cmath>

#include "Base/HUtil/Frames.h"
#include "Base/HUtil/Subdivide.h"
#include "Base/HairShadeContext.h"
#include "DebugTools/Assert.h"

namespace {

float ZeroIfNan(float f) {
    return std::isnan(f) ? 0.0f : f;
}

float Clamp01(float f) {
    return f > 0.0f ? (f < 1.0f ? f : 1.0f) : 0.0f;
}

} // namespace

SurfDistEvaluator::SurfDistEvaluator(const SurfDistSettings& settings, const SurfDistScene& scene)
    : settings_(settings), scene_(scene), normalTM_(NormalMatrix(scene.objectTM)) {
    if (!settings_.enabled || !scene_.mesh) return;
    channels_.resize(size_t(scene_.mesh->getNumMaps()) + 2);
    if (settings_.source == SURFDIST_CHANNEL) return;
    FindMaterial();
    context_ = std::make_unique<HairShadeContext>();
    context_->SetTransforms(&scene_.objectTM, &scene_.worldToCam);
    context_->SetNode(scene_.node, scene_.time);
    context_->SetCurve(0.02f);
    context_->SetHalfImageSize(100.0f, 100.0f);
    context_->ambientLight = Color(0, 0, 0);
    // Maps and final shading see the run's lights. Otherwise the context has no light list: its stand-by light then
    // shows a material as it is, wherever the scene's lights stand.
    const bool lit = settings_.source == SURFDIST_MAP || settings_.useFinalShading;
    if (lit && !scene_.lights.empty()) context_->SetLights(int(scene_.lights.size()), scene_.lights.data());
}

SurfDistEvaluator::~SurfDistEvaluator() {
    if (ownMaterial_) ownMaterial_->DeleteThis();
}

void SurfDistEvaluator::FindMaterial() {
    if (settings_.source != SURFDIST_SUBMATERIAL || scene_.material) return;
    static std::atomic<bool> reported{false};
    ReportAssertOnce(reported, "src/Base/SurfDist", __LINE__);
    if (scene_.makeDefaultMaterial) scene_.material = ownMaterial_ = scene_.makeDefaultMaterial(scene_.wireColor);
}

void SurfDistEvaluator::Interpolate(const Point3& bary, int face) {
    for (size_t i = 0; i < channels_.size(); ++i) {
        const MeshMap* map = scene_.mesh->Map(int(i) - 2);
        if (!map) continue;
        const TVFace& t = map->tf[size_t(face)];
        channels_[i] = BaryInterpolate(bary, map->tv[size_t(t.t[0])], map->tv[size_t(t.t[1])], map->tv[size_t(t.t[2])]);
    }
}

float SurfDistEvaluator::AtFace(const Point3& point, const Point3& bary, int face, const Point3* normal) {
    result_ = AColor(1, 1, 1, 1);
    if (!settings_.enabled || !scene_.mesh) return 1.0f;
    Interpolate(bary, face);
    const Point3 n = normal ? Normalize(VectorTransform(*normal, normalTM_)) : Point3(0, 0, 1);
    Evaluate(point, bary, face, n);
    return Component();
}

float SurfDistEvaluator::AtVertex(int vertex) {
    result_ = AColor(1, 1, 1, 1);
    if (!settings_.enabled || !scene_.mesh) return 1.0f;
    if (lowest_.empty()) lowest_ = FindLowestFaces(*scene_.mesh);
    const FaceCorner at = lowest_[size_t(vertex)];
    if (at.face < 0) return 1.0f;
    Point3 bary;
    bary[at.corner] = 1.0f;
    const Point3 normal = scene_.mesh->VertexNormals()[size_t(vertex)];
    return AtFace(scene_.mesh->verts[size_t(vertex)], bary, at.face, &normal);
}

void SurfDistEvaluator::Evaluate(const Point3& point, const Point3& bary, int face, const Point3& normal) {
    switch (settings_.source) {
    case SURFDIST_SUBMATERIAL:
        ShadeMaterial(point, bary, face, normal);
        break;
    case SURFDIST_MAP:
        ShadeMap(point, bary, face, normal);
        break;
    default:
        EvaluateChannel(bary, face);
        break;
    }
}

void SurfDistEvaluator::SetUpContext(const Point3& point, const Point3& bary, int face, const Point3& normal,
                                     int mtlNum) {
    const Point3 p = (point * scene_.objectTM) * scene_.worldToCam;
    context_->out.Reset();
    context_->SetPoint(p, point, VectorTransform(normal, scene_.worldToCam), bary, channels_.data(), -2,
                       int(channels_.size()), Point2(), mtlNum, face, false);
}

void SurfDistEvaluator::ShadeMaterial(const Point3& point, const Point3& bary, int face, const Point3& normal) {
    int index = scene_.mesh->faces[size_t(face)].MatID();
    Mtl* material = scene_.material;
    if (material && material->ClassID() == MULTI_CLASS_ID && material->NumSubMtls() > 0) {
        if (settings_.subMtlId != 0 && settings_.subMtlId <= material->NumSubMtls()) index = settings_.subMtlId - 1;
        material = material->GetSubMtl(index % material->NumSubMtls());
    }
    if (!material) return;
    SetUpContext(point, bary, face, normal, index);
    material->Shade(*context_);
    result_ = AColor(context_->out.c, 1.0f);
}

void SurfDistEvaluator::ShadeMap(const Point3& point, const Point3& bary, int face, const Point3& normal) {
    if (!settings_.map) return;
    SetUpContext(point, bary, face, normal, 0);
    const AColor c = settings_.map->EvalColor(*context_);
    result_ = {ZeroIfNan(c.r), ZeroIfNan(c.g), ZeroIfNan(c.b), ZeroIfNan(c.a)};
}

void SurfDistEvaluator::EvaluateChannel(const Point3& bary, int face) {
    const Mesh& mesh = *scene_.mesh;
    // Missing mapping channels keep the neutral white; missing vertex data is zero.
    const auto mapping = [&](int channel) {
        if (!mesh.Map(channel)) return;
        const Point3& p = channels_[size_t(channel + 2)];
        result_ = {p.x, p.y, p.z, 1.0f};
    };
    const auto data = [&](int channel) {
        const std::vector<float>* values = mesh.vertexFloat(channel);
        const int* v = mesh.faces[size_t(face)].v;
        const float f = values ? bary.x * (*values)[size_t(v[0])] + bary.y * (*values)[size_t(v[1])] +
                                     bary.z * (*values)[size_t(v[2])]
                               : 0.0f;
        result_ = {f, f, f, 1.0f};
    };
    switch (settings_.channelType) {
    case SURFCHAN_UVW:
        mapping(settings_.channel);
        break;
    case SURFCHAN_VERTEX_COLORS:
        mapping(MAP_VERTCOLOR);
        break;
    case SURFCHAN_SOFT_SELECTION:
        data(VDATA_SELECT);
        break;
    case SURFCHAN_WEIGHTS:
        data(VDATA_WEIGHT);
        break;
    case SURFCHAN_VERTEX_DATA:
        data(settings_.channel);
        break;
    case SURFCHAN_ILLUMINATION:
        mapping(MAP_SHADING);
        break;
    case SURFCHAN_ALPHA:
        mapping(MAP_ALPHA);
        break;
    }
}

float SurfDistEvaluator::Component() const {
    switch (settings_.component) {
    case SURFCOMP_RED:
        return Clamp01(result_.r);
    case SURFCOMP_GREEN:
        return Clamp01(result_.g);
    case SURFCOMP_BLUE:
        return Clamp01(result_.b);
    case SURFCOMP_ALPHA:
        return Clamp01(result_.a);
    default:
        return Clamp01(ZeroIfNan((result_.r + result_.g + result_.b) / 3.0f));
    }
}
