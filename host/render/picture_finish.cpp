#include "render/picture_finish.h"

#include "render/finish_progress.h"

namespace host {

namespace {

/// What a watcher reads: the effect's own name, else that of its class.
std::string NameOf(Effect& effect) {
    TSTR name = effect.GetName();
    if (name.empty()) effect.GetClassName(name);
    return name;
}

} // namespace

PictureFinish::PictureFinish(Core& core, const FrameSettings& settings)
    : core_(core), settings_(settings), asked_(core.GetRendParams().gbufChannels) {
    uint32_t& channels = core.RenderParams().gbufChannels;
    for (Effect* const effect : core.Effects()) {
        if (!effect->Active(settings.time)) continue;
        Interval valid = FOREVER;
        effect->Update(settings.time, valid);
        channels |= effect->GBufferChannelsRequired(settings.time);
        effects_.push_back(effect);
    }
    for (FilterQueue::Entry& entry : core.Filters().Entries()) {
        if (!entry.active) continue;
        entry.filter->BeforeRender(settings.time);
        channels |= entry.filter->ChannelsRequired();
        filters_.push_back(&entry);
    }
}

PictureFinish::~PictureFinish() {
    core_.RenderParams().gbufChannels = asked_;
}

bool PictureFinish::Run(Picture& picture, RenderGlobalContext& render, IProgressIndicator* progress) {
    if (effects_.empty() && filters_.empty()) return true;
    for (Effect* const effect : effects_) {
        FinishProgress told(core_, progress, NameOf(*effect));
        effect->Apply(settings_.time, &picture, &render, &told);
        if (told.Cancelled()) return false;
    }
    if (!RunFilters(picture, progress)) return false;
    EmptyOutside(picture);
    picture.KeepChannels(asked_ | BMM_CHAN_Z);
    return true;
}

bool PictureFinish::RunFilters(Picture& picture, IProgressIndicator* progress) {
    for (FilterQueue::Entry* const entry : filters_) {
        FinishProgress window(core_, progress, entry->name);
        const bool good = entry->filter->Render(&picture, &window);
        if (window.Cancelled()) return false;
        if (!good) throw Error("image filter '" + entry->name + "' failed");
    }
    return true;
}

void PictureFinish::EmptyOutside(Picture& picture) const {
    const PictureRegion& c = settings_.crop;
    if (c.Empty()) return;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x) {
            if (x >= c.x0 && x < c.x1 && y >= c.y0 && y < c.y1) continue;
            picture.PutPixel(x, y, {0, 0, 0, 0});
            if (picture.HasBackground()) picture.PutBackground(x, y, {});
        }
}

} // namespace host
