// The fur object's parameter blocks.

#include "BlockBuilder.h"

namespace {

constexpr BlockRow kObjectAdditions[] = {
    BLOCK_REF(pid_curve_clumpShape),
    BLOCK_REF(pid_surfDist_dirRand),
    BLOCK_REF(pid_surfDist_vdirRand),
};

constexpr BlockRow kShadeAdditions[] = {
    BLOCK_ROW(pid_knots, TYPE_INT, ROW_RANGE),
};

constexpr BlockRow kLeanBendRows[] = {
    BLOCK_ROW(pid_fur_useLeaning, TYPE_BOOL, 0),
    BLOCK_ROW(pid_fur_leanAmtRand, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_fur_leanMaxAngle, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_fur_leanVectAmount, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_fur_leanAbsolute, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_fur_leanAngle, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_fur_leanDir, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_fur_leanDirRand, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_fur_leanDirChan, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_fur_useBending, TYPE_BOOL, 0),
    BLOCK_ROW(pid_fur_bendVectAmount, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_fur_bendAmtRand, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_fur_bendStyle, TYPE_BOOL, 0),
    BLOCK_ROW(pid_fur_bendUseLeanVects, TYPE_BOOL, 0),
    BLOCK_ROW(pid_fur_bendAbsolute, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_fur_bendAmount, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_fur_bendDir, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_fur_bendDirRand, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_fur_bendDirChan, TYPE_INT, ROW_RANGE),
    BLOCK_NODES(pid_fur_leanVects),
    BLOCK_NODES(pid_fur_bendVects),
};

std::array<ParamBlockDesc2, kNumHairBlocks> MakeBlocks() {
    std::array<ParamBlockDesc2, kNumHairBlocks> blocks;
    for (int b = 0; b < kNumHairBlocks; ++b)
        if (b != BLOCK_LEAN_BEND) blocks[size_t(b)] = CopyTemplate(b);
    AppendRows(blocks[BLOCK_OBJECTS], kObjectAdditions);
    AppendRows(blocks[BLOCK_SHADE], kShadeAdditions);
    ParamBlockDesc2& leanBend = blocks[BLOCK_LEAN_BEND];
    NameBlock(leanBend, BLOCK_LEAN_BEND, "lanvoLeanBendParams");
    leanBend.flags = P_AUTO_CONSTRUCT;
    AppendRows(leanBend, kLeanBendRows);
    return blocks;
}

} // namespace

ParamBlockDesc2* GetFurBlock(int block) {
    static std::array<ParamBlockDesc2, kNumHairBlocks> blocks = MakeBlocks();
    return block >= 0 && block < kNumHairBlocks ? &blocks[size_t(block)] : nullptr;
}
