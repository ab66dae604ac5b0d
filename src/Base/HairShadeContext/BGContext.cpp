#include "Base/HairShadeContext.h"
#include "sdk/core.h"

BGContext::BGContext(RenderGlobalContext* context, TimeValue t, const Point3& view) : time_(t), view_(view) {
    globContext = context;
}

void BGContext::GetBGColor(Color& bg, Color& transparency, bool) {
    transparency = Color(1, 1, 1);
    if (globContext && globContext->envMap) {
        bg = Color(globContext->envMap->EvalColor(*this));
        return;
    }
    Interface* host = GetCOREInterface();
    Interval valid = FOREVER;
    bg = host ? host->GetBackGround(globContext ? globContext->time : time_, valid) : Color();
}

Color BGContext::EvalEnvironMap(Texmap* map, const Point3& view) {
    const Point3 before = view_;
    view_ = view;
    const Color c = map ? Color(map->EvalColor(*this)) : Color();
    view_ = before;
    return c;
}
