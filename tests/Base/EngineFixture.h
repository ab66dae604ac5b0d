#pragma once
// Emitters, parameters and a recording consumer for tests of the generation engine; no scene is needed.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <vector>

#include "Base/CreateHair/WorkUnits.h"
#include "Base/CtlHairMesh/CtlHairMesh.h"
#include "Base/HairParams.h"
#include "sdk/quat.h"

namespace engine {

inline Face Triangle(int a, int b, int c) {
    Face f;
    f.v[0] = a, f.v[1] = b, f.v[2] = c;
    return f;
}

/// A turn about a skew axis and a move.
inline Matrix3 TurnedAndMoved() {
    const float half = 0.45f;
    Matrix3 m = Quat(Normalize(Point3(0.3f, -0.8f, 0.5f)) * sinf(half), cosf(half)).ToMatrix();
    m.SetTrans({3, -2, 5});
    return m;
}

/// One triangle in the XY plane: (0,0,0), (1,0,0), (0,1,0). Its normal is +Z.
inline Mesh OneTriangle() {
    Mesh m;
    m.verts = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    m.faces = {Triangle(0, 1, 2)};
    return m;
}

/// A flat sheet of n x n quads in the XY plane, `size` wide, with its middle at the origin. Normals +Z.
inline Mesh FlatGrid(int n, float size) {
    Mesh m;
    for (int y = 0; y <= n; ++y)
        for (int x = 0; x <= n; ++x)
            m.verts.push_back({(float(x) / float(n) - 0.5f) * size, (float(y) / float(n) - 0.5f) * size, 0.0f});
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            const int a = y * (n + 1) + x, b = a + 1, c = a + n + 1, d = c + 1;
            m.faces.push_back(Triangle(a, b, d));
            m.faces.push_back(Triangle(a, d, c));
        }
    return m;
}

/// A closed sphere around the origin, poles along Z, faces outward.
inline Mesh Sphere(float radius, int rings, int slices) {
    Mesh m;
    m.verts.push_back({0, 0, radius});
    for (int r = 1; r < rings; ++r)
        for (int s = 0; s < slices; ++s) {
            const float a = 3.1415927f * float(r) / float(rings), b = 6.2831853f * float(s) / float(slices);
            m.verts.push_back({radius * sinf(a) * cosf(b), radius * sinf(a) * sinf(b), radius * cosf(a)});
        }
    m.verts.push_back({0, 0, -radius});
    const int last = m.getNumVerts() - 1;
    const auto at = [&](int r, int s) { return 1 + (r - 1) * slices + s % slices; };
    for (int s = 0; s < slices; ++s) {
        m.faces.push_back(Triangle(0, at(1, s), at(1, s + 1)));
        for (int r = 1; r < rings - 1; ++r) {
            m.faces.push_back(Triangle(at(r, s), at(r + 1, s), at(r + 1, s + 1)));
            m.faces.push_back(Triangle(at(r, s), at(r + 1, s + 1), at(r, s + 1)));
        }
        m.faces.push_back(Triangle(at(rings - 1, s), last, at(rings - 1, s + 1)));
    }
    return m;
}

/// An emitter whose mesh and place are functions of time. Without them it stands still, valid forever.
class Emitter : public IEmitterSource {
public:
    explicit Emitter(Mesh m) : mesh(std::move(m)) {}
    Mesh mesh;
    Matrix3 objectTM;
    std::function<Mesh(TimeValue)> meshAt;
    std::function<Matrix3(TimeValue)> placeAt;
    bool missing = false; ///< answers no mesh
    std::vector<TimeValue> asked;

    std::shared_ptr<const Mesh> MeshAt(TimeValue t, Interval& valid) override {
        asked.push_back(t);
        if (missing) return nullptr;
        if (meshAt) valid = Interval(t, t);
        auto m = std::make_shared<Mesh>(meshAt ? meshAt(t) : mesh);
        m->checkNormals();
        return m;
    }
    Matrix3 ObjectTM(TimeValue t, Interval& valid) override {
        if (placeAt) valid = Interval(t, t);
        return placeAt ? placeAt(t) : objectTM;
    }
    bool NamedFaceSet(const std::string& name, BitArray& faces) override {
        for (const auto& set : mesh.faceSets)
            if (set.first == name) {
                faces = set.second;
                return true;
            }
        return false;
    }
};

/// A curve through corner knots, over 0..1.
inline CurveShape Curve(std::initializer_list<Point2> knots) {
    CurveShape c;
    for (const Point2& p : knots) c.knots.push_back({p.x, p.y, CURVE_CORNER});
    c.Fit();
    return c;
}

/// Straight fur, one unit long, five knots, five steps, four strands a face, no curve.
inline HairParams PlainFur() {
    HairParams p = HairParams::Defaults(true);
    p.SetInt(pid_knots, 5);
    p.SetInt(pid_bezierSteps, 5);
    p.SetInt(pid_densType, 0);
    p.SetFloat(pid_densPerFace, 4.0f);
    p.SetFloat(pid_length, 1.0f);
    p.SetInt(pid_fur_useLeaning, 0);
    p.SetInt(pid_fur_useBending, 0);
    p.SetInt(pid_useCurliness, 0);
    p.SetInt(pid_fixShape, 0);
    p.SetInt(pid_fixDensity, 0);
    p.SetFloat(pid_thickness, 0.01f);
    p.SetFloat(pid_dirRand, 0.0f);
    p.SetFloat(pid_vdirRand, 0.0f);
    p.SetInt(pid_orientAxis, 2);
    p.SetInt(pid_orientAngle, 0);
    p.SetFloat(pid_orientRand, 0.0f);
    p.SetFloat(pid_clumpAmount, 0.0f);
    for (int i = 0; i < kNumCurves; ++i) p.SetCurve(kFirstCurvePid + i, CurveShape());
    return p;
}

/// Curls, clumping and every random switched on.
inline HairParams WildFur() {
    HairParams p = PlainFur();
    p.SetInt(pid_fur_useLeaning, 1);
    p.SetFloat(pid_fur_leanAngle, 40.0f);
    p.SetFloat(pid_fur_leanAmtRand, 0.3f);
    p.SetFloat(pid_fur_leanDirRand, 0.3f);
    p.SetFloat(pid_vdirRand, 0.2f);
    p.SetFloat(pid_dirRand, 0.2f);
    p.SetFloat(pid_orientRand, 0.5f);
    p.SetInt(pid_useCurliness, 1);
    p.SetFloat(pid_curlRadius, 0.05f);
    p.SetFloat(pid_curlTurns, 2.0f);
    p.SetFloat(pid_curlOrientRandom, 1.0f);
    p.SetFloat(pid_clumpAmount, 0.6f);
    p.SetFloat(pid_clumpRadius, 1.0f);
    p.SetInt(pid_clumpAttract, 1);
    p.SetFloat(pid_clumpPercent, 0.2f);
    p.SetCurve(pid_curve_thickness, Curve({{0, 1}, {1, 0.2f}}));
    p.SetCurve(pid_curve_curlRadius, Curve({{0, 0}, {1, 1}}));
    p.SetCurve(pid_curve_curlTurns, Curve({{0, 0}, {0.5f, 0.7f}, {1, 1}}));
    p.SetCurve(pid_curve_clumpShape, Curve({{0, 0}, {0.3f, 0.6f}, {1, 1}}));
    p.SetRandCurve(pid_randDist_length, Curve({{0, 0}, {0.3f, 0.2f}, {1, 1}}));
    p.SetRandCurve(pid_randDist_thickness, Curve({{0, 0.5f}, {1, 1}}));
    for (const int pid : {pid_randDist_colorH, pid_randDist_colorS, pid_randDist_colorV})
        p.SetRandCurve(pid, Curve({{0, 1}, {1, 1}}));
    return p;
}

/// Everything of one finished strand.
struct StrandRecord {
    int face = 0, index = 0, segments = 0, points = 0, materialId = 0;
    bool attracted = false;
    Point3 bary, weights, root, orientation;
    float fraction = 0, thickness = 0;
    Color base, tip;
    uint32_t state = 0; ///< the generator's state afterwards
    std::vector<Point3> control, position, tangent;
    std::vector<float> width;

    explicit StrandRecord(const StrandContext& c)
        : face(c.face->face), index(c.strandIndex), segments(c.segments), points(c.points), materialId(c.materialId),
          attracted(c.attracted), bary(c.bary), weights(c.weights), root(c.rootOutput), orientation(c.orientation),
          fraction(c.fraction), thickness(c.thickness), base(c.base), tip(c.tip), state(c.rng.state) {
        for (int k = 0; k <= 3 * c.segments; ++k) control.push_back(c.control[k]);
        for (int i = 0; i < c.points; ++i) {
            position.push_back(c.position[i]);
            tangent.push_back(c.tangent[i]);
            width.push_back(c.width[i]);
        }
    }
    friend bool operator==(const StrandRecord&, const StrandRecord&) = default;
};

/// Consumer that keeps every strand, or stops after a number of them.
struct Recorder {
    std::vector<StrandRecord> strands;
    size_t limit = ~size_t(0);
    bool Aborted() const { return strands.size() >= limit; }
    void OnStrand(StrandContext& c) { strands.emplace_back(c); }
};

/// One prepared run on one emitter.
class Engine {
public:
    Engine(Mesh mesh, const HairParams& p, const RunRequest& r = {}, TimeValue t = 0,
           const ISurfaceProvider* surfaces = nullptr)
        : emitter(std::move(mesh)), params(p), control(&emitter, surfaces) {
        Begin(r, t);
    }
    /// Evaluates at `t` and prepares anew.
    void Begin(RunRequest r, TimeValue t = 0) {
        ASSERT_TRUE(control.Evaluate(t, params));
        if (r.mode == GEN_RENDER && !r.image) r.mode = GEN_SHAPE; // strands without a picture
        r.params = &params;
        r.control = &control;
        prepared = run.Prepare(r);
        if (!prepared) return;
        context = std::make_unique<StrandContext>(run, 0);
        DrawStrandCounts(run, *context);
    }
    std::vector<StrandRecord> Strands(int strandsPerUnit = 128) {
        Recorder recorder;
        for (const WorkUnit& u : MakeWorkUnits(run, strandsPerUnit)) BuildUnit(*context, u, recorder);
        return std::move(recorder.strands);
    }

    Emitter emitter;
    HairParams params;
    CtlHairMesh control;
    GenerationRun run;
    bool prepared = false;
    std::unique_ptr<StrandContext> context;
};

/// All strands of a mesh.
inline std::vector<StrandRecord> Grow(Mesh mesh, const HairParams& p) {
    return Engine(std::move(mesh), p).Strands();
}

inline float ChordLength(const StrandRecord& s) {
    float length = 0;
    for (size_t i = 1; i < s.position.size(); ++i) length += Length(s.position[i] - s.position[i - 1]);
    return length;
}

#define EXPECT_POINT_NEAR(a, b, tolerance)                                                                             \
    EXPECT_LT(Length(Point3(a) - Point3(b)), tolerance)                                                                \
        << "(" << (a).x << " " << (a).y << " " << (a).z << ") and (" << (b).x << " " << (b).y << " " << (b).z << ")"

} // namespace engine
