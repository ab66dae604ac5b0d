#pragma once
// Building blocks of the parameter block descriptors: rows of identifiers become definitions, whose ranges, defaults,
// names and flags come from the definition tables.

#include <span>

#include "Base/ParamBlocks.h"

/// What a row adds to its record (bit set).
enum RowTrait : unsigned {
    ROW_RANGE = 1, ///< the block clamps to the record's range
    ROW_WORLD = 2, ///< a length in world units
    ROW_HELD = 4,  ///< held by the object, not by the block
};

/// One parameter of a block.
struct BlockRow {
    int pid;
    const char* intName;
    ParamType2 type;
    unsigned traits;
};

/// A row whose internal name is the identifier's own.
#define BLOCK_ROW(pid, type, traits)                                                                                   \
    BlockRow {                                                                                                         \
        pid, #pid, type, traits                                                                                        \
    }
/// A curve, surface or random distribution, and a node list.
#define BLOCK_REF(pid) BLOCK_ROW(pid, TYPE_REFTARG, 0)
#define BLOCK_NODES(pid) BLOCK_ROW(pid, TYPE_INODE_TAB, 0)

/// The definition of a row.
ParamDef MakeParam(const BlockRow& row);
void AppendRows(ParamBlockDesc2& desc, std::span<const BlockRow> rows);

/// A class's descriptor: a copy of the template's definitions, built automatically into the slot of its number.
ParamBlockDesc2 CopyTemplate(int block);
/// Sets identifier, internal name and title.
void NameBlock(ParamBlockDesc2& desc, int block, const char* intName);
