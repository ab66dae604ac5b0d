#pragma once
// The control layer of the hair on one emitter: its mesh, the faces that grow hair, and one strand a vertex.

#include <memory>
#include <vector>

#include "Base/CtlHairMesh/EmitterSource.h"
#include "Base/CtlHairMesh/NodeInfo.h"
#include "Base/CtlHairMesh/VertexStrand.h"
#include "Base/HUtil/HairRandom.h"
#include "Base/HairParams.h"
#include "sdk/bitarray.h"
#include "sdk/box3.h"

class SurfDistEvaluator;

/// The emitter mesh at the fixing reference frame: what keeps density and clumping the same while the emitter deforms.
struct ReferenceMesh {
    std::shared_ptr<const Mesh> mesh;
    Matrix3 objectTM;
    std::vector<float> faceArea;   ///< world-space area by face
    std::vector<Point3> positions; ///< world-space position by vertex
    int VertexCount() const { return int(positions.size()); }
};

/// Makes surface distribution evaluators for an emitter mesh; the objects floor supplies materials and lights.
class ISurfaceProvider {
public:
    virtual ~ISurfaceProvider() = default;
    /// A new evaluator for `settings` on `mesh`; never null.
    virtual std::unique_ptr<SurfDistEvaluator> MakeEvaluator(const SurfDistSettings& settings,
                                                             std::shared_ptr<const Mesh> mesh,
                                                             const Matrix3& objectTM) const = 0;
};

/// Control strands of one emitter. Updated on the main thread; only read while generation threads run.
class CtlHairMesh : public INodeInfo {
public:
    /// `emitter` and `surfaces` (may be null: distributions then answer 1) must outlive the record.
    explicit CtlHairMesh(IEmitterSource* emitter, const ISurfaceProvider* surfaces = nullptr);
    ~CtlHairMesh() override;
    INode* GetNode() override { return emitter_->Node(); }

    // The flat point space of dynamics: strands in vertex order, knots root first.
    virtual int PointCount() const;
    /// The knot through `tm`; an index out of range reports an assertion once per run and gives the origin.
    virtual Point3 GetPoint(int index, const Matrix3& tm) const;
    virtual void SetPoint(int index, const Point3& p);
    /// Forgets everything that was computed.
    virtual void Reset();

    /// Brings the record to `t`, building every strand anew. False when the emitter has no usable mesh.
    bool Update(TimeValue t, const HairParams& params, bool isSnapshot = false);
    /// Brings the record to `t` as generation wants it: with shape fixing the strands of the fixing frame are carried
    /// along. Does nothing while `t` lies in the validity interval. False when the emitter has no usable mesh.
    bool Evaluate(TimeValue t, const HairParams& params);
    /// Makes sure that the fixing snapshot exists and is valid. False (and no snapshot) when it cannot be made.
    bool PrepareSnapshot(const HairParams& params);

    const VertexStrand* Strand(int vertex) const { return strands_[size_t(vertex)].get(); }
    /// The strand for writing: one that is shared becomes the record's own.
    VertexStrand* EditStrand(int vertex);
    int VertexCount() const { return int(strands_.size()); }
    int KnotsPerStrand() const { return knotsPerStrand_; }
    bool FaceSelected(int face) const;
    const Mesh* CurrentMesh() const { return mesh_.get(); }
    std::shared_ptr<const Mesh> SharedMesh() const { return mesh_; }
    const ReferenceMesh* Reference() const { return reference_ ? reference_.get() : nullptr; }
    const Matrix3& ObjectTM() const { return tmNow_; }
    const Interval& Validity() const { return valid_; }
    TimeValue Time() const { return time_; }
    /// Length factor left by the modelling cutters at a vertex; 1 when missing or negative.
    float CutFactor(int vertex) const;
    void SetCutFactors(std::vector<float> factors) { cutFactors_ = std::move(factors); }
    /// Stores a knot and rebuilds the spline when it comes from the knots.
    void SetKnot(VertexStrand& strand, int index, const Point3& p);
    /// Box of the strands kept for the viewport: every strand with probability density / 100, the same ones every time.
    const Box3& Bounds(const HairParams& params, int densityPercent);
    /// Generator state that the last update of the strands left: rendering of vertex strands goes on from here.
    const HairRandom& RandomState() const { return randomState_; }
    const ISurfaceProvider* Surfaces() const { return surfaces_; }

private:
    struct FurBuilder;
    std::unique_ptr<ReferenceMesh> MakeReference(const HairParams& params);
    void TakeMeshes(std::unique_ptr<ReferenceMesh> reference, std::shared_ptr<const Mesh> mesh, TimeValue t,
                    Interval valid);
    void SelectFaces(const HairParams& params);
    void BuildFurStrands(const HairParams& params);
    void CarrySnapshot(const HairParams& params);

    IEmitterSource* emitter_;
    const ISurfaceProvider* surfaces_;
    TimeValue time_ = TIME_NegInfinity;
    Interval valid_, meshValid_, strandsValid_;
    std::vector<float> cutFactors_;
    int knotsPerStrand_ = 0;
    Matrix3 tmNow_;
    std::shared_ptr<const Mesh> mesh_;
    /// A strand that the fixing snapshot's carries over unchanged is shared with it.
    std::vector<std::shared_ptr<VertexStrand>> strands_;
    BitArray faceSelected_;
    BitArray vertexCarries_; ///< vertices of selected faces
    Box3 bounds_;
    bool boundsValid_ = false;
    HairRandom randomState_{};
    std::unique_ptr<CtlHairMesh> snapshot_;
    std::unique_ptr<ReferenceMesh> reference_;
};
