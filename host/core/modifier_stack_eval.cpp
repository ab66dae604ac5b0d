// Modifier stacks: evaluation.

#include "core/modifier_stack.h"
#include "core/node.h"
#include "core/render_evaluation.h"

namespace host {

/// One evaluation: the node's place is asked for once, when a modifier needs it.
struct ModifierStack::Run {
    Node& node;
    TimeValue t;
    bool placed = false;
    Matrix3 tm{};
    Interval tmValid = FOREVER;

    void NeedPlace() {
        if (!placed) tm = node.GetObjectTM(t, &tmValid);
        placed = true;
    }
    /// Where the modifier and the place that it uses stay the same.
    Interval LocalValidity(Modifier& m) {
        Interval valid = m.LocalValidity(t);
        if (!UsesPlace(m)) return valid;
        NeedPlace();
        return valid &= tmValid;
    }
};

namespace {

bool Contains(const Interval& outer, const Interval& inner) {
    return inner.Empty() || (outer.Start() <= inner.Start() && outer.End() >= inner.End());
}

} // namespace

bool ModifierStack::Active(const Entry& e) const {
    if (!e.modifier || !e.modifier->IsEnabled()) return false;
    return rendering_ ? e.modifier->IsEnabledInRender() : e.modifier->IsEnabledInViews();
}

const ObjectState& ModifierStack::Eval(Node& node, Object* base, TimeValue t) {
    const std::lock_guard<std::recursive_mutex> lock(mutex_);
    const bool rendering = RenderEvaluation::Running();
    if (rendering != rendering_) {
        rendering_ = rendering;
        for (size_t b = 0; b < entries_.size(); ++b) {
            Modifier* const m = FromBottom(b).modifier;
            if (m && m->IsEnabledInRender() != m->IsEnabledInViews()) Dirty(b);
        }
    }
    // Where the base object itself flows, other nodes may have asked it meanwhile, for other times.
    const auto holds = [&](const Object* obj, const Interval& valid) {
        return valid.InInterval(t) && (valid == FOREVER || obj != baseObject_);
    };
    if (holds(result_.obj, result_.valid)) return result_;

    std::vector<std::unique_ptr<Segment>> former; // lives until the new result stands
    if (stale_) {
        former.swap(segments_);
        baseStamp_.fill(++lastStamp_);
        stale_ = false;
    }
    if (segments_.empty()) segments_.push_back(std::make_unique<Segment>());
    const auto kept = [&](const Segment& s) { return s.clean && holds(s.out.obj, s.out.valid.All()); };
    size_t k = segments_.size();
    while (k > 0 && !kept(*segments_[k - 1])) --k;
    Run run{node, t};
    Flow flow = k == 0 ? BaseFlow(base, t) : segments_[k - 1]->out;
    for (; k < segments_.size(); ++k) {
        RunSegment(k, flow, run);
        flow = segments_[k]->out;
    }
    Keep(flow, t);
    return result_;
}

void ModifierStack::Keep(const Flow& out, TimeValue t) {
    result_ = {out.obj, out.valid.All()};
    // Whatever the parts say, the result holds at the time it was made for.
    if (!result_.valid.InInterval(t)) result_.valid = Interval(t, t);
}

ModifierStack::Flow ModifierStack::BaseFlow(Object* base, TimeValue t) {
    Flow f;
    if (!base) {
        baseObject_ = nullptr;
        return f;
    }
    const ObjectState os = base->Eval(t);
    f.obj = os.obj;
    for (int c = 0; c < NUM_OBJ_CHANS && f.obj; ++c) f.valid[c] = f.obj->ChannelValidity(t, c);
    // A class that tells more about the whole than about its channels.
    if (!Contains(os.valid, f.valid.All()))
        for (int c = 0; c < NUM_OBJ_CHANS; ++c) f.valid[c] &= os.valid;
    for (int c = 0; c < NUM_OBJ_CHANS; ++c)
        if (f.obj != baseObject_ || !baseValid_[c].InInterval(t)) baseStamp_[size_t(c)] = ++lastStamp_;
    baseObject_ = f.obj;
    baseValid_ = f.valid;
    f.stamp = baseStamp_;
    return f;
}

void ModifierStack::RunSegment(size_t k, const Flow& in, Run& run) {
    Segment& s = *segments_[k];
    std::vector<Owned> former;
    former.swap(s.made);
    s.clean = false;
    Flow f = in;
    f.own = false;
    const size_t end = k + 1 < segments_.size() ? segments_[k + 1]->first : entries_.size();
    for (size_t b = s.first; b < end && f.obj; ++b) {
        const Entry& e = FromBottom(b);
        if (!Active(e)) continue;
        if (f.own && (e.edited || !Contains(run.LocalValidity(*e.modifier), f.valid.All()))) {
            auto next = std::make_unique<Segment>();
            next->first = b;
            segments_.insert(segments_.begin() + std::ptrdiff_t(k) + 1, std::move(next));
            break;
        }
        Apply(s, e, f, run);
    }
    if (f.own && f.obj && f.obj != baseObject_)
        for (int c = 0; c < NUM_OBJ_CHANS; ++c) f.obj->SetChannelValidity(c, f.valid[c]);
    s.out = f;
    s.clean = true;
}

// Makes the flowing object one of the modifier's class; false when that cannot be done.
bool ModifierStack::Converted(Segment& s, Modifier& m, Flow& f, TimeValue t) {
    const Class_ID type = m.InputType();
    if (type == defObjectClassID || f.obj->ClassID() == type) return true;
    Object* const as = f.obj->CanConvertToType(type) ? f.obj->ConvertToType(t, type) : nullptr;
    if (!as) return false;
    if (as == f.obj) return true;
    s.made.emplace_back(as);
    const Interval all = f.valid.All();
    f.obj = as;
    f.own = true;
    for (int c = 0; c < NUM_OBJ_CHANS; ++c) {
        f.valid[c] = all;
        f.stamp[size_t(c)] = ++lastStamp_;
    }
    return true;
}

// Puts the segment's own copy into the flow. What cannot be copied is worked on itself.
void ModifierStack::TakeCopy(Segment& s, Flow& f, TimeValue t) {
    bool fresh = false;
    if (s.work && s.workOf == f.obj) {
        ChannelMask mask = s.touched;
        for (int c = 0; c < NUM_OBJ_CHANS; ++c)
            if (s.workStamp[size_t(c)] != f.stamp[size_t(c)]) mask |= ChannelBit(c);
        fresh = s.work->CopyChannels(f.obj, mask);
    }
    if (!fresh) s.work.reset(f.obj->PipelineCopy(t));
    s.workOf = f.obj;
    s.workStamp = f.stamp;
    s.touched = 0;
    if (s.work) f.obj = s.work.get();
    f.own = true;
}

void ModifierStack::Apply(Segment& s, const Entry& e, Flow& f, Run& run) {
    Modifier& m = *e.modifier;
    if (!Converted(s, m, f, run.t)) return;
    if (!f.own) TakeCopy(s, f, run.t);
    if (e.context->box.IsEmpty()) e.context->box = f.obj->GetDeformBBox();
    Interval local = run.LocalValidity(m) & f.valid.Of(m.ChannelsUsed());
    ChannelMask changed = m.ChannelsChanged() & OBJ_CHANNELS;
    s.touched |= changed;
    ObjectState os{f.obj, f.valid.All()};
    if (UsesPlace(m)) os.tm = run.tm;
    const Interval before = os.valid;
    m.ModifyObject(run.t, *e.context, &os, &run.node);
    if (!(os.valid == before)) local &= os.valid;
    if (os.obj != f.obj) {
        f.obj = os.obj;
        if (!f.obj) return;
        f.own = f.obj != baseObject_;
        if (f.own) s.made.emplace_back(f.obj);
        changed = OBJ_CHANNELS;
        for (int c = 0; c < NUM_OBJ_CHANS; ++c) f.valid[c] = f.obj->ChannelValidity(run.t, c);
    }
    for (int c = 0; c < NUM_OBJ_CHANS; ++c) {
        if (!(changed & ChannelBit(c))) continue;
        f.valid[c] &= local;
        f.stamp[size_t(c)] = ++lastStamp_;
    }
}

} // namespace host
