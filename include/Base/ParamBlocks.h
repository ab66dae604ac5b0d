#pragma once
// Descriptors of the hair and fur objects' parameter blocks, with what checks and serves their values.

#include <array>
#include <cstdint>

#include "Base/HairParams.h"
#include "Base/ParamIds.h"
#include "sdk/plugapi.h"

/// Block identifiers; a block's number is also its reference slot in the object.
enum HairBlockId : int {
    BLOCK_OBJECTS = 0,
    BLOCK_GENERAL = 1,
    BLOCK_SHADE = 2,
    BLOCK_DYNAMICS = 3,
    BLOCK_LEAN_BEND = 4, ///< fur only
    BLOCK_MENTAL_RAY = 5,
};
inline constexpr int kNumHairBlocks = 6;

/// The definitions that hair and fur share (blocks 0, 1, 2, 3 and 5), built on the first call; they belong to no class.
/// Null for any other block.
const ParamBlockDesc2* GetTemplateBlock(int block);

/// The hair object's descriptor of a block, built on the first call; null where it has none.
ParamBlockDesc2* GetHairBlock(int block);
/// The fur object's.
ParamBlockDesc2* GetFurBlock(int block);
inline ParamBlockDesc2* GetObjectBlock(bool fur, int block) {
    return fur ? GetFurBlock(block) : GetHairBlock(block);
}

/// Hands the object's descriptors to its class, in block order, and notes the class in them. Call it once a class.
void AddObjectBlocks(ClassDesc2& desc, bool fur);

/// Block map entry of an identifier that no block holds.
inline constexpr uint8_t kNoBlock = 255;
/// Which block holds a parameter, by identifier.
std::array<uint8_t, kNumPids> BuildBlockMap(bool fur);

/// Whether `node` may stand in node list `list` (200..208) of `owner` (may be null). Any other list is an internal
/// error and refused. Null is refused.
bool AcceptsNode(int list, INode* node, ReferenceMaker* owner, TimeValue t);

/// Asks AcceptsNode at the host's current time.
PBValidator* GetNodeListValidator();
/// Repeats the check when a node is set and empties the slot of a node that does not qualify.
PBAccessor* GetNodeListAccessor();

/// What the accessor of the object-held parameters (50..54) reads and writes; the hair and fur objects implement it.
class IFaceSelectionOwner {
public:
    virtual ~IFaceSelectionOwner() = default;
    virtual FaceSelection& GetFaceSelection() = 0;
    virtual bool& GetUpdateOnChange() = 0;
    /// Called after a value was stored: tells the dependents that parameters changed.
    virtual void ParametersChanged() = 0;
};

/// Serves parameters 50..54 from the owner's fields. A face selection type outside 0..4 is ignored.
PBAccessor* GetFaceSelectionAccessor();
