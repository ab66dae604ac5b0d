#pragma once
// The scene as plain data: what undo is compared with.

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace undo_test {

/// A keyed number.
struct Track {
    float constant = 0;
    std::map<int, float> keys;
    bool operator==(const Track&) const = default;
    void Set(int t, float v) { (keys.empty() ? constant : keys[t]) = v; }
};

/// A use of a modifier and the number that it keeps for its node.
struct StackEntry {
    int modifier = 0, number = 0;
    bool operator==(const StackEntry&) const = default;
};

/// A node with a light; nodes by number, -1 for none.
struct NodeModel {
    std::string name;
    int parent = 0, target = -1;
    std::vector<int> children, excluded;
    std::vector<StackEntry> stack;
    float red = 0.6f, multiplier = 1;
    bool hidden = false, selected = false, shines = true;
    std::string property;
    Track position;
    std::optional<Track> multiplierTrack;
    bool operator==(const NodeModel&) const = default;
};

/// Node 0 is the root.
struct SceneModel {
    std::map<int, NodeModel> nodes{{0, {}}};
    std::vector<int> atmospherics;
    std::map<int, bool> off; ///< modifiers that are switched off
    float background = 0;
    int lastFrame = 0;
    bool operator==(const SceneModel&) const = default;

    /// Whether following references from `from` leads to `to`.
    bool Reaches(int from, int to) const {
        if (from == to) return true;
        const NodeModel& n = nodes.at(from);
        if (n.target >= 0 && Reaches(n.target, to)) return true;
        for (const int e : n.excluded)
            if (e >= 0 && Reaches(e, to)) return true;
        return false;
    }
    /// Whether the place of `node` follows from that of `on`.
    bool PlaceDependsOn(int node, int on) const {
        for (int n = node; n >= 0; n = nodes.at(n).parent) {
            if (n == on) return true;
            const int target = nodes.at(n).target;
            if (target >= 0 && PlaceDependsOn(target, on)) return true;
        }
        return false;
    }
    void Attach(int child, int parent) {
        NodeModel& n = nodes.at(child);
        if (n.parent >= 0) std::erase(nodes.at(n.parent).children, child);
        n.parent = parent;
        nodes.at(parent).children.push_back(child);
    }
    void Delete(int node) {
        NodeModel gone = nodes.at(node);
        while (!nodes.at(node).children.empty()) Attach(nodes.at(node).children.back(), gone.parent);
        std::erase(nodes.at(gone.parent).children, node);
        nodes.erase(node);
        for (auto& [id, n] : nodes) {
            if (n.target == node) n.target = -1;
            for (int& e : n.excluded)
                if (e == node) e = -1;
        }
    }
};

} // namespace undo_test
