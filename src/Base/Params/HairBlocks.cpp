// The hair object's parameter blocks, and what both objects' blocks have in common.

#include <algorithm>

#include "BlockBuilder.h"

namespace {

constexpr BlockRow kObjectAdditions[] = {
    BLOCK_ROW(pid_hair_autoInfMix, TYPE_FLOAT, ROW_RANGE),
    BLOCK_NODES(pid_hair_models),
    BLOCK_REF(pid_curve_clumpShape),
    BLOCK_REF(pid_surfDist_dirRand),
    BLOCK_REF(pid_surfDist_vdirRand),
};

constexpr BlockRow kShadeAdditions[] = {
    BLOCK_ROW(pid_knots, TYPE_INT, ROW_RANGE),
};

ParamDef& ParamOf(ParamBlockDesc2& desc, int pid) {
    return *std::find_if(desc.params.begin(), desc.params.end(), [pid](const ParamDef& p) { return p.id == pid; });
}

std::array<ParamBlockDesc2, kNumHairBlocks> MakeBlocks() {
    std::array<ParamBlockDesc2, kNumHairBlocks> blocks;
    for (int b = 0; b < kNumHairBlocks; ++b)
        if (b != BLOCK_LEAN_BEND) blocks[size_t(b)] = CopyTemplate(b);
    AppendRows(blocks[BLOCK_OBJECTS], kObjectAdditions);

    // The length multiplies that of the model hairs: a factor, not world units.
    ParamDef& length = ParamOf(blocks[BLOCK_GENERAL], pid_length);
    length.def.f = 1.0f;
    length.rangeHigh = 1.0f;
    length.worldUnits = false;

    ParamBlockDesc2& shade = blocks[BLOCK_SHADE];
    shade.intName = "MXS_HAIR_PREFIXShadeParams"; // intended: scripts and saved scenes see this name
    AppendRows(shade, kShadeAdditions);
    ParamOf(shade, pid_knots).def.i = 10;
    return blocks;
}

} // namespace

ParamBlockDesc2* GetHairBlock(int block) {
    static std::array<ParamBlockDesc2, kNumHairBlocks> blocks = MakeBlocks();
    return block >= 0 && block < kNumHairBlocks && block != BLOCK_LEAN_BEND ? &blocks[size_t(block)] : nullptr;
}

void AddObjectBlocks(ClassDesc2& desc, bool fur) {
    for (int b = 0; b < kNumHairBlocks; ++b) {
        ParamBlockDesc2* block = GetObjectBlock(fur, b);
        if (!block) continue;
        block->classDesc = &desc;
        desc.AddParamBlockDesc(block);
    }
}

std::array<uint8_t, kNumPids> BuildBlockMap(bool fur) {
    std::array<uint8_t, kNumPids> map;
    map.fill(kNoBlock);
    for (int b = 0; b < kNumHairBlocks; ++b)
        if (const ParamBlockDesc2* block = GetObjectBlock(fur, b))
            for (const ParamDef& p : block->params) map[size_t(p.id)] = uint8_t(b);
    return map;
}
