// Undo: random edits, cancelled and accepted holds, undo and redo against a plain model.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>

#include "core/controllers.h"
#include "core/core.h"
#include "core/light.h"
#include "test_objects.h"
#include "undo_model.h"

namespace {

using namespace host;
using namespace undo_test;

constexpr int kMaxNodes = 9, kNumModifiers = 3, kLimit = 12;

class Fog : public Atmospheric {
public:
    void Shade(ShadeContext&, const Point3&, const Point3&, Color&, Color&, bool) override {}
};

/// What a modifier keeps for a node.
class NumberData : public LocalModData {
public:
    explicit NumberData(int n) : number(n) {}
    LocalModData* Clone() override { return new NumberData(number); }
    int number;
};

struct Step {
    int op, a, b, c;
};
std::ostream& operator<<(std::ostream& out, const Step& s) {
    return out << s.op << "(" << s.a << "," << s.b << "," << s.c << ")";
}

// The scene in the host and as a model; every step is taken in both.
class Pair {
public:
    Pair() {
        theHold.Flush();
        theHold.SetUndoLimit(kLimit);
        byId_[0] = core_.GetRootNode();
        for (int i = 0; i < kNumModifiers; ++i) modifiers_.push_back(core_.Adopt(new Modifier));
        for (int i = 0; i < kNumModifiers; ++i) {
            fogs_.push_back(core_.Adopt(new Fog));
            fogUser_.ReplaceReference(i, fogs_.back()); // so that the list is not its last user
        }
        model_.lastFrame = core_.GetAnimRange().End();
        model_.nodes.at(0).parent = -1;
        model_.nodes.at(0).name = core_.GetRootNode()->GetName();
    }
    ~Pair() {
        for (size_t i = 0; i < levels_.size(); ++i) theHold.Accept("");
        for (size_t i = 0; i < supers_.size(); ++i) theHold.SuperAccept("");
        theHold.SetUndoLimit(100);
    }

    void Take(const Step& s) {
        switch (s.op) {
        case 0:
            return;
        case 1:
            return Begin();
        case 2:
            return End(true);
        case 3:
            return End(false);
        case 4:
            return Move(undo_, redo_, theHold.Undo());
        case 6:
            return Move(redo_, undo_, theHold.Redo());
        case 7:
            if (!levels_.empty()) theHold.Restore(), model_ = levels_.back();
            return;
        case 8:
            if (levels_.empty() && supers_.size() < 2) theHold.SuperBegin(), supers_.push_back(model_);
            return;
        case 9:
        case 10:
            return levels_.empty() && !supers_.empty() ? SuperEnd(s.op == 9) : void();
        default:
            break;
        }
        // What nobody records cannot be undone: every edit needs a hold.
        const bool own = levels_.empty();
        if (own) Begin();
        Edit(s);
        if (own) End(true);
    }

    // What the host shows, as a model.
    SceneModel Shown() {
        SceneModel shown;
        shown.nodes.clear();
        numbers_.clear();
        for (const auto& [id, n] : model_.nodes) numbers_[byId_.at(id)] = id;
        std::vector<Node*> all = core_.AllNodes();
        all.push_back(core_.GetRootNode());
        for (Node* const node : all) shown.nodes[NumberOf(node)] = ShownNode(node);
        for (int i = 0; i < core_.NumAtmospheric(); ++i)
            shown.atmospherics.push_back(IndexOf(fogs_, core_.GetAtmospheric(i)));
        Interval valid = FOREVER;
        shown.background = core_.GetBackGround(0, valid).r;
        shown.lastFrame = core_.GetAnimRange().End();
        for (int i = 0; i < kNumModifiers; ++i)
            if (!modifiers_[size_t(i)]->IsEnabled()) shown.off[i] = true;
        return shown;
    }
    // The model as far as it can be seen from outside.
    SceneModel Expected() const {
        SceneModel expected = model_;
        for (auto& [id, n] : expected.nodes) {
            if (!n.position.keys.empty()) n.position.constant = 0;
            if (!n.multiplierTrack) continue;
            n.multiplier = 1;
            if (!n.multiplierTrack->keys.empty()) n.multiplierTrack->constant = 0;
        }
        return expected;
    }
    bool StepsAgree() const { return theHold.NumUndo() == int(undo_.size()) && theHold.NumRedo() == int(redo_.size()); }

private:
    struct Done {
        std::string name;
        SceneModel other; ///< the scene on the step's other side
    };

    template <class T>
    static int IndexOf(const std::vector<T*>& all, const void* one) {
        for (size_t i = 0; i < all.size(); ++i)
            if (all[i] == one) return int(i);
        return -1;
    }
    int NumberOf(INode* node) const {
        const auto it = numbers_.find(node);
        return it == numbers_.end() ? -1000 : it->second;
    }

    NodeModel ShownNode(Node* node) {
        NodeModel n;
        n.name = node->GetName();
        n.parent = node->GetParentNode() ? NumberOf(node->GetParentNode()) : -1;
        for (int i = 0; i < node->NumberOfChildren(); ++i) n.children.push_back(NumberOf(node->GetChildNode(i)));
        if (node == core_.GetRootNode()) return n;
        n.target = node->GetTarget() ? NumberOf(node->GetTarget()) : -1;
        for (int i = 0; i < node->NumModifiers(); ++i) {
            const auto* const data = static_cast<const NumberData*>(node->GetModContext(i)->localData);
            n.stack.push_back({IndexOf(modifiers_, node->GetModifier(i)), data ? data->number : 0});
        }
        n.red = node->GetWireColor().r;
        n.hidden = node->IsNodeHidden();
        n.selected = node->Selected();
        node->GetUserPropString("p", n.property);
        ShowTrack(*static_cast<PositionControl*>(PositionOf(node)), n.position, [](const Point3& p) { return p.x; });
        ShowLight(*static_cast<Light*>(node->GetObjectRef())->Params(), n);
        return n;
    }
    template <class C, class F>
    static void ShowTrack(C& control, Track& track, F&& number) {
        for (const auto& key : control.Keys()) track.keys[key.time] = number(key.val);
        decltype(typename C::Key().val) v{};
        Interval valid = FOREVER;
        control.GetValue(0, &v, valid);
        if (track.keys.empty()) track.constant = number(v);
    }
    void ShowLight(IParamBlock2& block, NodeModel& n) {
        n.shines = block.GetInt(kLightOn) != 0;
        if (auto* const c = static_cast<FloatControl*>(block.GetController(kLightMultiplier)))
            ShowTrack(*c, n.multiplierTrack.emplace(), [](float v) { return v; });
        else
            n.multiplier = block.GetFloat(kLightMultiplier);
        for (int i = 0; i < block.Count(kLightExclude); ++i) {
            INode* const e = block.GetINode(kLightExclude, 0, i);
            n.excluded.push_back(e ? NumberOf(e) : -1);
        }
    }
    static Control* PositionOf(Node* node) { return static_cast<PrsControl*>(node->GetTMController())->Position(); }

    void Begin() {
        theHold.Begin();
        levels_.push_back(model_);
    }
    void End(bool accept) {
        if (levels_.empty()) return;
        const SceneModel before = levels_.back();
        levels_.pop_back();
        if (!accept) {
            theHold.Cancel();
            model_ = before;
            return;
        }
        const std::string name = "step " + std::to_string(++steps_);
        theHold.Accept(name);
        if (levels_.empty() && supers_.empty()) Push(name, before);
    }
    void SuperEnd(bool accept) {
        const SceneModel before = supers_.back();
        supers_.pop_back();
        if (!accept) {
            theHold.SuperCancel();
            model_ = before;
            return;
        }
        const std::string name = "super " + std::to_string(++steps_);
        theHold.SuperAccept(name);
        if (supers_.empty()) Push(name, before);
    }
    // A step without records is none; then nothing may have changed.
    void Push(const std::string& name, const SceneModel& before) {
        if (theHold.UndoName() != name) {
            RC_ASSERT(before == model_);
            return;
        }
        redo_.clear();
        undo_.push_back({name, before});
        if (undo_.size() > size_t(kLimit)) undo_.erase(undo_.begin());
    }
    void Move(std::vector<Done>& from, std::vector<Done>& to, bool done) {
        RC_ASSERT(done == (levels_.empty() && supers_.empty() && !from.empty()));
        if (!done) return;
        Done step = from.back();
        from.pop_back();
        std::swap(step.other, model_);
        to.push_back(step);
    }

    // The node of the model that number `n` chooses; the root too when asked for.
    int Choose(int n, bool root = false) const {
        std::vector<int> ids;
        for (const auto& [id, node] : model_.nodes)
            if (root || id != 0) ids.push_back(id);
        return ids.empty() ? -1 : ids[size_t(n) % ids.size()];
    }
    void Made(int id, Node* node) { byId_[id] = node; }

    void Edit(const Step& s) {
        const int id = Choose(s.a);
        if (s.op == 11 || id < 0) return Create(s);
        Node* const node = byId_.at(id);
        NodeModel& n = model_.nodes.at(id);
        if (s.op < 20)
            EditGraph(s, id, node, n);
        else if (s.op < 28)
            EditValues(s, node, n);
        else
            EditKeys(s, node, n);
    }
    void Create(const Step& s) {
        if (model_.nodes.size() >= kMaxNodes) return;
        const int parent = Choose(s.b, true), id = ++lastId_;
        const std::string name = "n" + std::to_string(s.c);
        Node* const node = core_.CreateNode(name, new Light(OMNI_LGT), byId_.at(parent));
        node->SetTMController(new PrsControl);
        Made(id, node);
        model_.nodes[id].name = name;
        model_.nodes[id].parent = -1;
        model_.Attach(id, parent);
    }
    void EditGraph(const Step& s, int id, Node* node, NodeModel& n) {
        const int other = Choose(s.b), anywhere = Choose(s.b, true);
        IParamBlock2& block = *static_cast<Light*>(node->GetObjectRef())->Params();
        switch (s.op) {
        case 12:
            core_.DeleteNode(node);
            return model_.Delete(id);
        case 13: {
            const bool fits = !model_.PlaceDependsOn(anywhere, id);
            RC_ASSERT(byId_.at(anywhere)->AttachChild(node) == fits);
            return fits ? model_.Attach(id, anywhere) : void();
        }
        case 14: {
            const bool none = s.c == 0;
            const bool fits = none || (!model_.PlaceDependsOn(other, id) && !model_.Reaches(other, id));
            RC_ASSERT(node->SetTarget(none ? nullptr : byId_.at(other)) == fits);
            if (fits) n.target = none ? -1 : other;
            return;
        }
        case 15:
        case 16: {
            const bool fits = !model_.Reaches(other, id);
            RC_ASSERT(block.Append(kLightExclude, byId_.at(other)) == fits);
            if (fits) n.excluded.push_back(other);
            return;
        }
        case 17: {
            const int count = int(n.excluded.size()), start = count ? s.b % count : 0;
            const int less = std::min(s.c % 3, count - start);
            RC_ASSERT(block.Delete(kLightExclude, start, less));
            n.excluded.erase(n.excluded.begin() + start, n.excluded.begin() + start + less);
            return;
        }
        case 18:
            RC_ASSERT(block.SetCount(kLightExclude, s.b % 4));
            return n.excluded.resize(size_t(s.b % 4), -1);
        default:
            return Clone(id, node);
        }
    }
    void Clone(int id, Node* node) {
        if (model_.nodes.size() >= kMaxNodes) return;
        const int copy = ++lastId_;
        Made(copy, core_.CloneNodes({node}).front());
        NodeModel n = model_.nodes.at(id);
        const int parent = std::exchange(n.parent, -1);
        n.children.clear();
        n.selected = false;
        model_.nodes[copy] = n;
        model_.Attach(copy, parent);
    }
    void EditValues(const Step& s, Node* node, NodeModel& n) {
        IParamBlock2& block = *static_cast<Light*>(node->GetObjectRef())->Params();
        switch (s.op) {
        case 20:
            n.name = "r" + std::to_string(s.b);
            return node->SetName(n.name.c_str());
        case 21:
            n.red = float(s.b) / 8;
            return node->SetWireColor({n.red, 0, 0});
        case 22:
            n.hidden = s.b & 1, n.selected = s.b & 2;
            node->Hide(n.hidden);
            return node->SetSelected(n.selected);
        case 23:
            n.property = std::to_string(s.b);
            return node->SetUserPropString("p", n.property.c_str());
        case 24:
            n.shines = s.b & 1;
            block.SetValue(kLightOn, 0, int(n.shines));
            return;
        case 25: {
            const int at = s.b % (int(n.stack.size()) + 1);
            n.stack.insert(n.stack.begin() + at, {s.c % kNumModifiers, 0});
            RC_ASSERT(node->AddModifier(modifiers_[size_t(s.c % kNumModifiers)], at));
            return;
        }
        case 26:
            return EditStack(s, node, n);
        default:
            return EditScene(s);
        }
    }
    void EditStack(const Step& s, Node* node, NodeModel& n) {
        const int count = int(n.stack.size()), at = s.b % (count + 1), to = s.c / 4 % (count + 1);
        const bool there = at < count, both = there && to < count;
        switch (s.c % 4) {
        case 0:
            RC_ASSERT(node->DeleteModifier(at) == there);
            if (there) n.stack.erase(n.stack.begin() + at);
            return;
        case 1: {
            RC_ASSERT(node->MoveModifier(at, to) == both);
            if (!both) return;
            const StackEntry moved = n.stack[size_t(at)];
            n.stack.erase(n.stack.begin() + at);
            n.stack.insert(n.stack.begin() + to, moved);
            return;
        }
        case 2: {
            ModContext context;
            context.localData = new NumberData(s.c);
            RC_ASSERT(node->SetModContext(at, context) == there);
            if (there) n.stack[size_t(at)].number = s.c;
            return;
        }
        default: {
            const int which = s.b % kNumModifiers;
            Modifier& m = *modifiers_[size_t(which)];
            if (s.c / 4 % 2) {
                m.DisableMod();
                model_.off[which] = true;
            } else {
                m.EnableMod();
                model_.off.erase(which);
            }
        }
        }
    }
    void EditScene(const Step& s) {
        const int fog = s.b % kNumModifiers;
        const auto at = std::find(model_.atmospherics.begin(), model_.atmospherics.end(), fog);
        switch (s.c % 4) {
        case 0:
            core_.AddAtmosphere(fogs_[size_t(fog)]);
            if (at == model_.atmospherics.end()) model_.atmospherics.push_back(fog);
            return;
        case 1:
            if (at == model_.atmospherics.end()) return;
            core_.DeleteAtmosphere(int(at - model_.atmospherics.begin()));
            model_.atmospherics.erase(at);
            return;
        case 2:
            model_.background = float(s.b);
            return core_.SetBackGround({model_.background, 0, 0});
        default:
            model_.lastFrame = s.b;
            core_.SetAnimRange({0, s.b});
        }
    }
    void EditKeys(const Step& s, Node* node, NodeModel& n) {
        IParamBlock2& block = *static_cast<Light*>(node->GetObjectRef())->Params();
        auto* const position = static_cast<PositionControl*>(PositionOf(node));
        auto* const multiplier = static_cast<FloatControl*>(block.GetController(kLightMultiplier));
        const int t = s.b % 5;
        const float v = float(s.c);
        switch (s.op) {
        case 28:
            n.position.keys[t] = v;
            return position->SetKey(t, {v, 0, 0});
        case 29:
            RC_ASSERT(position->DeleteKeyAtTime(t) == (n.position.keys.erase(t) > 0));
            return;
        case 30: {
            const auto at = n.position.keys.find(t);
            RC_ASSERT(position->MoveKey(t, s.c % 5) == (at != n.position.keys.end()));
            if (at == n.position.keys.end()) return;
            const float moved = at->second;
            n.position.keys.erase(at);
            n.position.keys[s.c % 5] = moved;
            return;
        }
        case 31: {
            const Point3 place(v, 0, 0);
            n.position.Set(t, v);
            return position->SetValue(t, &place);
        }
        case 32:
            n.multiplierTrack.reset();
            if (s.b & 1) n.multiplierTrack = Track{v, {}};
            RC_ASSERT(block.SetController(kLightMultiplier, s.b & 1 ? new FloatControl(v) : nullptr));
            return;
        case 33:
            block.SetValue(kLightMultiplier, t, v);
            n.multiplier = v;
            return n.multiplierTrack ? n.multiplierTrack->Set(t, v) : void();
        default:
            if (!multiplier) return;
            multiplier->SetKey(t, v);
            n.multiplierTrack->keys[t] = v;
        }
    }
    Core core_;
    Core::Scope scope_{core_};
    std::vector<Modifier*> modifiers_;
    std::vector<Atmospheric*> fogs_;
    Thing fogUser_{kNumModifiers};
    SceneModel model_;
    std::vector<SceneModel> levels_, supers_;
    std::vector<Done> undo_, redo_;
    std::map<int, Node*> byId_;
    std::map<INode*, int> numbers_;
    int lastId_ = 0, steps_ = 0;
};

// Of 102 numbers: mostly edits, undo and redo often enough to have both ways to go.
int OpOf(int n) {
    if (n == 0) return 0;
    if (n <= 56) return 11 + n % 24;
    constexpr int kOthers[] = {1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 4, 4, 4, 4, 4, 4, 4, 4, 4,
                               4, 4, 4, 4, 4, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 7, 8, 9, 9, 10};
    static_assert(std::size(kOthers) == 45);
    return kOthers[n - 57];
}

TEST(UndoRandom, AHundredThousandStepsAgreeWithTheModel) {
    constexpr int kSteps = 1000;
    int64_t taken = 0, undone = 0, redone = 0;
    const auto number = [](int below) { return rc::gen::resize(rc::kNominalSize, rc::gen::inRange(0, below)); };
    // Shrinking goes to 0, no step.
    const auto step = rc::gen::construct<Step>(rc::gen::map(number(102), OpOf), number(16), number(16), number(16));
    EXPECT_TRUE(rc::check("random edits, undo and redo", [&] {
        Pair pair;
        for (const Step& s : *rc::gen::container<std::vector<Step>>(kSteps, step)) {
            const int before = theHold.NumUndo(), redoBefore = theHold.NumRedo();
            pair.Take(s);
            ++taken;
            undone += theHold.NumUndo() == before - 1 && theHold.NumRedo() == redoBefore + 1;
            redone += theHold.NumRedo() == redoBefore - 1 && theHold.NumUndo() == before + 1;
            RC_ASSERT(pair.StepsAgree());
            RC_ASSERT(pair.Shown() == pair.Expected());
        }
    }));
    EXPECT_GE(taken, 100000);
    EXPECT_GE(undone, 5000);
    EXPECT_GE(redone, 3000);
    std::printf("%d steps, %d undone, %d redone\n", int(taken), int(undone), int(redone));
}

} // namespace
