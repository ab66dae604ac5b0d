#pragma once
// Which faces of an emitter grow hair.

#include <string>
#include <vector>

#include "Base/CtlHairMesh/EmitterSource.h"
#include "Base/HairParams.h"
#include "sdk/bitarray.h"

/// A range of one-based material ids, both ends inclusive.
struct MtlIdRange {
    int from = 0, to = 0;
    friend bool operator==(const MtlIdRange&, const MtlIdRange&) = default;
};

/// Parses a comma-separated list of ids and ranges such as "1,3,5-8". A wrong character ends its entry, which keeps
/// what it had; reading goes on after the next comma.
std::vector<MtlIdRange> ParseMtlIdList(const std::string& text);

/// Result of a face selection.
struct FaceSelectionResult {
    BitArray faces;    ///< one bit a face
    bool found = true; ///< false: the named selection set does not exist (no face is selected)
};

/// The faces that `selection` picks on the emitter's mesh.
FaceSelectionResult ComputeFaceSelection(const FaceSelection& selection, const Mesh& mesh, IEmitterSource& emitter);
