#include "Base/CreateHair/FaceRecords.h"

#include "Base/CreateHair/StrandContext.h"

namespace {

// Draws made from a face's seed before its roots: strand number, attractor number.
constexpr uint64_t kDrawsBeforeRoots = 2;
constexpr uint64_t kDrawsPerRoot = 2;

float ClumpValue(const HairParams& p, float strandCount, float area) {
    switch (p.Int(pid_clumpAttract)) {
    case 1:
        return strandCount * p.Float(pid_clumpPercent);
    case 2:
        return p.Float(pid_clumpPerFace);
    case 3:
        return area * p.Float(pid_clumpPerArea);
    default:
        return area;
    }
}

} // namespace

void BuildFaceRecords(const GenerationRun& run, std::vector<EmitterFace>& faces) {
    const HairParams& p = *run.params;
    const Mesh& mesh = *run.mesh;
    const ReferenceMesh* reference = run.control->Reference();
    HairRandom rng;
    rng.Seed(uint32_t(p.Int(pid_randSeed)));
    faces.assign(mesh.faces.size(), EmitterFace());
    for (size_t i = 0; i < faces.size(); ++i) {
        EmitterFace& f = faces[i];
        f.face = int(i);
        f.seed = uint32_t(rng.Draw()); // draw: the face's seed
        for (int c = 0; c < 3; ++c) {
            const int v = mesh.faces[i].v[c];
            f.corner[c] = mesh.verts[size_t(v)] * run.objectTM;
            f.strand[c] = run.control->Strand(v);
        }
        f.centre = (f.corner[0] + f.corner[1] + f.corner[2]) / 3.0f;
        const float area = reference && i < reference->faceArea.size()
                               ? reference->faceArea[i]
                               : Length(CrossProd(f.corner[2] - f.corner[0], f.corner[1] - f.corner[0])) / 2.0f;
        f.strandCount = p.Int(pid_densType) == 0 ? p.Float(pid_densPerFace) : p.Float(pid_densPerArea) * area;
        f.clumpValue = ClumpValue(p, f.strandCount, area);
    }
}

void DrawStrandCounts(GenerationRun& run, StrandContext& context) {
    const bool density = run.params->Surface(pid_surfDist_density) != nullptr;
    for (EmitterFace& f : run.faces) {
        f.strands = f.attractors = 0;
        if (!run.control->FaceSelected(f.face) || !f.strand[0] || !f.strand[1] || !f.strand[2]) continue;
        HairRandom rng;
        rng.Seed(f.seed);
        const float expected = density ? f.strandCount * context.DensityFactor(f) : f.strandCount;
        f.strands = RandomRound(rng, expected);        // draw: strand number
        f.attractors = RandomRound(rng, f.clumpValue); // draw: attractor number
        if (f.strands < 0) f.strands = 0;
    }
}

HairRandom RootGenerator(const EmitterFace& face, int index) {
    HairRandom rng;
    rng.Seed(face.seed);
    rng.Skip(kDrawsBeforeRoots + kDrawsPerRoot * uint64_t(index));
    return rng;
}

Point3 StrandRoot(const EmitterFace& face, int index) {
    HairRandom rng = RootGenerator(face, index);
    return RandomBarycentric(rng); // two draws
}
