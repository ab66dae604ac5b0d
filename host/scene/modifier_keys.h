#pragma once
// The key table's part about modifiers, selections and shapes.

#include <algorithm>
#include <array>
#include <iterator>

#include "scene/key_table.h"

namespace host::keys {

using enum KeyType;

inline constexpr double kLargest = 1e30;
inline constexpr const char* kModifierTypes = "mesh_select|smooth|normal_flip|xform|bend|noise|skin|morph|mesh_cache";

inline constexpr SceneKey kEveryModifier[] = {
    {"type", kChoice, "", "", "kind of modifier, or the class name of a plug-in's", 0, 0, kModifierTypes},
    {"name", kText, "\"\"", "",
     "its name in the stack; [[keys]] and command lines call its parameters NODE.NAME. Left out: the type, with a "
     "number where the node has several"},
    {"enabled", kFlag, "true", "", "whether it works"},
    {"in_render", kFlag, "true", "", "whether it works in pictures"},
    {"in_views", kFlag, "true", "", "whether it works outside pictures"},
};

inline constexpr SceneKey kPluginModifier[] = {
    {"type", kText, "", "", "class name of the modifier"},
    kEveryModifier[1],
    kEveryModifier[2],
    kEveryModifier[3],
    kEveryModifier[4],
    {"set", kParameters, "", "", "parameters by their own names"},
};

/// The keys of every modifier and those of one kind.
template <size_t N>
consteval auto ModifierKeys(const SceneKey (&own)[N]) {
    std::array<SceneKey, std::size(kEveryModifier) + N> keys{};
    std::copy(std::begin(own), std::end(own),
              std::copy(std::begin(kEveryModifier), std::end(kEveryModifier), keys.begin()));
    return keys;
}

inline constexpr SceneKey kSelection[] = {
    {"all", kFlag, "false", "", "everything"},
    {"ids", kIntegers, "[]", "", "numbers of faces (or vertices), from 0 in the order of the mesh"},
    {"ranges", kRows, "[]", "", "[first, last] for every run of such numbers"},
    {"materials", kIntegers, "[]", "", "faces with these material ids, from 1"},
    {"smoothing", kIntegers, "[]", "", "faces with one of these smoothing groups, 1 to 32"},
    {"sets", kNames, "[]", "", "faces of these named sets"},
    {"invert", kFlag, "false", "", "everything but what the other keys name"},
};

inline constexpr auto kMeshSelect = ModifierKeys({
    {"level", kChoice, "\"face\"", "", "what later modifiers work on", 0, 0, "object|vertex|face"},
    {"select", kTable, "", "", "what is selected; face keys at vertex level mean the faces' corners", 0, 0,
     "selection"},
    {"sets", kNamed, "", "", "named face sets by name", 0, 0, "selection"},
    {"soft", kFlag, "false", "", "vertices near the selection belong to it in part"},
    {"falloff", kNumber, "20.0", "", "distance up to which they do", 0, 1e12},
    {"pinch", kNumber, "0.0", "", "raises the weights far from the selection", -10, 10},
    {"bubble", kNumber, "0.0", "", "raises the weights near the selection", -10, 10},
});

inline constexpr auto kSmooth = ModifierKeys({
    {"angle", kNumber, "30.0", "degrees", "edges up to this angle between their faces become smooth", 0, 180},
    {"mode", kChoice, "\"angle\"", "", "by angle, everything, or nothing smooth", 0, 0, "angle|all|none"},
});

inline constexpr std::span<const SceneKey> kNormalFlip = kEveryModifier;

inline constexpr auto kXForm = ModifierKeys({
    {"position", kPoint, "[0, 0, 0]", "", "shift"},
    {"rotation", kPoint, "[0, 0, 0]", "degrees", "turns, as a node's rotation"},
    {"scale", kPoint, "[1, 1, 1]", "", "factors"},
    {"center", kPoint, "[0, 0, 0]", "", "the point about which it turns and scales"},
});

inline constexpr auto kBend = ModifierKeys({
    {"angle", kNumber, "0.0", "degrees", "turn over the object's height along Z", -kLargest, kLargest},
    {"direction", kNumber, "0.0", "degrees", "where it bends to, from X about Z", -kLargest, kLargest},
});

inline constexpr auto kNoise = ModifierKeys({
    {"strength", kPoint, "[0, 0, 0]", "", "most that points move along X, Y and Z"},
    {"scale", kNumber, "1.0", "", "size of the waves", 1e-6, kLargest},
    {"phase", kNumber, "0.0", "", "way through the noise", -kLargest, kLargest},
    {"seed", kInteger, "0", "", "another noise for every number", 0, 1000000},
});

inline constexpr auto kSkin = ModifierKeys({
    {"bones", kNames, "[]", "", "the nodes that move the mesh; they are bound where they stand without [[keys]]"},
    {"weights", kRows, "[]", "",
     "[vertex, bone, weight] for every pair, both numbers from 0; the weights of a vertex are scaled to the sum 1, and "
     "a vertex without any stays"},
});

inline constexpr auto kMorph = ModifierKeys({
    {"targets", kTables, "", "", "the shapes", 0, 0, "morph_target"},
});

inline constexpr SceneKey kMorphTarget[] = {
    {"name", kText, "\"\"", "", "name of the target"},
    {"file", kText, "\"\"", "", "mesh file with the goal, as many vertices as the mesh of the node"},
    {"moves", kRows, "[]", "", "in place of a file: [vertex, x, y, z], how far each vertex goes"},
    {"weight", kNumber, "0.0", "", "how much of it counts; 1 is all", -kLargest, kLargest},
    {"keys", kRows, "[]", "", "[frame, weight] for every key"},
};

inline constexpr auto kMeshCache = ModifierKeys({
    {"frames", kFiles, "", "",
     "mesh files with the vertices of each frame: a name with # for the digits of the frame number "
     "(\"walk.####.obj\"), or "
     "a list of names"},
    {"start", kNumber, "0.0", "frames", "scene frame of a list's first file; added to the numbers of a series", -1e6,
     1e6},
    {"step", kNumber, "1.0", "frames", "scene frames from one file of a list to the next", 1e-3, 1e6},
    {"interpolate", kFlag, "true", "", "vertices go straight from frame to frame; else they jump"},
});

inline constexpr SceneKey kShape[] = {
    {"name", kText, "", "", "name of the new node"},
    {"file", kText, "\"\"", "", "an .obj file: every `l` line is a spline"},
    {"splines", kTables, "", "", "the splines", 0, 0, "spline"},
    {"position", kPoint, "[0, 0, 0]", "", "place"},
    {"rotation", kPoint, "[0, 0, 0]", "degrees", "turns, as a node's"},
    {"scale", kPoint, "[1, 1, 1]", "", "factors along its own axes"},
    {"parent", kText, "\"\"", "", "node that this one moves with"},
};

inline constexpr SceneKey kSpline[] = {
    {"points", kRows, "[]", "", "[x, y, z] for every knot"},
    {"closed", kFlag, "false", "", "the last knot goes on to the first"},
    {"type", kChoice, "\"corner\"", "", "kind of the knots", 0, 0, "corner|smooth|bezier"},
    {"handles", kRows, "[]", "",
     "for bezier knots: [x, y, z, x, y, z], the places of the incoming and the outgoing handle of every knot"},
    {"straight", kIntegers, "[]", "", "knots, from 0, after which the spline goes straight"},
    {"keys", kRows, "[]", "", "[knot, frame, x, y, z] for every key of a knot's place"},
};

} // namespace host::keys
