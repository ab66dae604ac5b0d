#include "modifiers/selection_rule.h"

#include <algorithm>

namespace host {

namespace {

void AddNumbers(const SelectionRule& rule, BitArray& bits) {
    if (rule.all) bits.SetAll();
    for (const int i : rule.ids) bits.Set(i);
    for (const auto& [first, last] : rule.ranges)
        for (int i = std::max(first, 0); i <= std::min(last, bits.GetSize() - 1); ++i) bits.Set(i);
}

/// Faces that a rule names by what they are.
void AddKinds(const Mesh& mesh, const SelectionRule& rule, BitArray& bits) {
    for (int f = 0; f < mesh.getNumFaces(); ++f) {
        const Face& face = mesh.faces[size_t(f)];
        if ((face.smGroup & rule.smoothing) ||
            std::find(rule.materials.begin(), rule.materials.end(), face.MatID()) != rule.materials.end())
            bits.Set(f);
    }
    for (const auto& [name, set] : mesh.faceSets) {
        if (std::find(rule.sets.begin(), rule.sets.end(), name) == rule.sets.end()) continue;
        for (int f = 0; f < mesh.getNumFaces(); ++f)
            if (set[f]) bits.Set(f);
    }
}

void Invert(BitArray& bits) {
    for (int i = 0; i < bits.GetSize(); ++i) bits.Set(i, !bits[i]);
}

} // namespace

BitArray SelectFaces(const Mesh& mesh, const SelectionRule& rule) {
    BitArray bits(mesh.getNumFaces());
    AddNumbers(rule, bits);
    AddKinds(mesh, rule, bits);
    if (rule.invert) Invert(bits);
    return bits;
}

BitArray SelectVertices(const Mesh& mesh, const SelectionRule& rule) {
    BitArray faces(mesh.getNumFaces()), bits(mesh.getNumVerts());
    AddNumbers(rule, bits);
    AddKinds(mesh, rule, faces);
    for (int f = 0; f < mesh.getNumFaces(); ++f)
        if (faces[f])
            for (const int v : mesh.faces[size_t(f)].v) bits.Set(v);
    if (rule.invert) Invert(bits);
    return bits;
}

} // namespace host
