// Curve controls as sections of settings files.

#include <initializer_list>
#include <string>

#include "Base/HUtil/NumberText.h"
#include "CurveCtl/CurveCtl.h"
#include "DebugTools/Platform.h"
#include "HairDLL/StringTable.h"
#include "sdk/core.h"

namespace {

/// One section of one settings file.
class Section {
public:
    Section(const char* file, const char* name) : file_(file), name_(name) {}
    void Write(const char* key, const std::string& value) const {
        diag::WriteProfileString(name_, key, value.c_str(), file_);
    }
    /// The text of a key; empty when it is missing. Keeps 99 characters.
    const char* Read(const char* key) {
        diag::ReadProfileString(name_, key, "", buffer_, sizeof buffer_, file_);
        return buffer_;
    }

private:
    const char *file_, *name_;
    char buffer_[100];
};

std::string KnotKey(int i) {
    return std::to_string(i);
}

std::string Floats(std::initializer_list<float> values) {
    std::string text;
    for (const float v : values) {
        if (!text.empty()) text += ' ';
        text += FormatFloat(v);
    }
    return text;
}

TimeValue HostTime() {
    Interface* host = GetCOREInterface();
    return host ? host->GetTime() : 0;
}

} // namespace

void CurveCtl::SaveToINI(const char* file, const char* section) {
    const CurveShape& shape = Shape(HostTime());
    const Section out(file, section);
    out.Write(FindString(kKeyEnabled), std::to_string(enabled_));
    out.Write(FindString(kKeyKnots), std::to_string(shape.knots.size()));
    out.Write(FindString(kKeyRanges), Floats({shape.xMin, shape.xMax, shape.yMin, shape.yMax}));
    for (size_t i = 0; i < shape.knots.size(); ++i) {
        const CurveShapeKnot& k = shape.knots[i];
        out.Write(KnotKey(int(i)).c_str(), std::to_string(k.type) + " " + Floats({k.x, k.y}));
    }
}

bool CurveCtl::LoadFromINI(const char* file, const char* section) {
    int count = 0;
    if (!NumberReader(Section(file, section).Read(FindString(kKeyKnots))).Read(count)) return false;
    if (count < 0 || count > kMaxCurveKnots) return false;
    {
        const bool before = SetBatch(true);
        ReadSection(file, section, count);
        SetBatch(before);
    }
    Changed();
    return true;
}

void CurveCtl::ReadSection(const char* file, const char* section, int count) {
    Section in(file, section);
    RemoveAllKnots();
    NumberReader(in.Read(FindString(kKeyEnabled))).Read(enabled_);
    NumberReader ranges(in.Read(FindString(kKeyRanges)));
    for (float* value : {&shape_.xMin, &shape_.xMax, &shape_.yMin, &shape_.yMax}) ranges.Read(*value);
    for (int i = 0; i < count; ++i) {
        int type = CURVE_CORNER;
        float x = 0.0f, y = 0.0f;
        NumberReader knot(in.Read(KnotKey(i).c_str()));
        knot.Read(type);
        knot.Read(x);
        knot.Read(y);
        InsertKnot(i, new CurveKnot(x, y, type));
    }
    selection.SetSize(count);
    selection.ClearAll();
}
