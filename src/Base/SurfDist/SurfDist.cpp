// The surface distribution object: its state, its map, settings files.

#include "Base/SurfDist/SurfDist.h"

#include <algorithm>
#include <cstdio>

#include "DebugTools/platform/Ini.h"
#include "HairDLL/StringTable.h"
#include "SurfDistRanges.h"
#include "sdk/core.h"

namespace {

constexpr int kClassNameText = 40516;

/// The integers of a section, with their keys.
struct IniField {
    int key;
    int SurfDistSettings::*field;
    SurfDistRange range;
};
constexpr IniField kIniFields[] = {
    {kKeyType, &SurfDistSettings::source, kSurfDistSources},
    {kKeySubMatID, &SurfDistSettings::subMtlId, kSurfDistSubMtls},
    {kKeyMapChanType, &SurfDistSettings::channelType, kSurfDistChannelTypes},
    {kKeyMapChan, &SurfDistSettings::channel, kSurfDistChannels},
    {kKeyComponent, &SurfDistSettings::component, kSurfDistComponents},
};

void WriteInt(const char* file, const char* section, int key, int value) {
    char text[16];
    std::snprintf(text, sizeof text, "%d", value);
    diag::WriteProfileString(section, FindString(key), text, file);
}

bool ReadText(const char* file, const char* section, int key, char* text, size_t size) {
    return diag::ReadProfileString(section, FindString(key), "", text, size, file) > 0;
}

bool ReadInt(const char* file, const char* section, int key, int& value) {
    char text[32];
    return ReadText(file, section, key, text, sizeof text) && std::sscanf(text, "%d", &value) == 1;
}

} // namespace

void SurfDist::Changed() {
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
}

void SurfDist::SetSettings(const SurfDistSettings& settings) {
    Texmap* const former = settings_.map;
    settings_ = settings;
    settings_.map = former; // replaced through the reference system only
    for (const IniField& f : kIniFields) settings_.*f.field = f.range.Clamp(settings_.*f.field);
    ReplaceReference(0, settings.map);
    Changed();
}

void SurfDist::SetEnabled(bool on) {
    settings_.enabled = on;
    Changed();
}

bool SurfDist::SetMap(Texmap* map) {
    if (ReplaceReference(0, map) != REF_SUCCEED) return false;
    Changed();
    return true;
}

void SurfDist::Update(TimeValue t, Interval& valid) {
    if (!settings_.enabled || settings_.source != SURFDIST_MAP || !settings_.map) return;
    settings_.map->Update(t, valid);
    valid &= settings_.map->Validity(t);
}

void SurfDist::SaveToINI(const char* file, const char* section) const {
    WriteInt(file, section, kKeyEnabled, settings_.enabled);
    WriteInt(file, section, kKeyUseEmitterFinalShading, settings_.useFinalShading);
    for (const IniField& f : kIniFields) WriteInt(file, section, f.key, settings_.*f.field);
    const std::string name = settings_.map ? settings_.map->GetName() : std::string();
    diag::WriteProfileString(section, FindString(kKeyMapName), name.c_str(), file);
}

bool SurfDist::LoadFromINI(const char* file, const char* section) {
    int number = 0;
    if (!ReadInt(file, section, kKeyEnabled, number)) return false;
    SurfDistSettings loaded = settings_;
    loaded.enabled = number != 0;
    if (ReadInt(file, section, kKeyUseEmitterFinalShading, number)) loaded.useFinalShading = number != 0;
    for (const IniField& f : kIniFields)
        if (ReadInt(file, section, f.key, number)) loaded.*f.field = number;
    char name[256];
    Interface* host = GetCOREInterface();
    loaded.map = nullptr;
    if (host && ReadText(file, section, kKeyMapName, name, sizeof name)) loaded.map = host->FindTexmapByName(name);
    SetSettings(loaded);
    return true;
}

void SurfDist::GetClassName(TSTR& s) {
    s = FindString(kClassNameText);
}

void SurfDist::SetReference(int i, RefTargetHandle target) {
    if (i == 0) settings_.map = static_cast<Texmap*>(target);
}

RefTargetHandle SurfDist::Clone(RemapDir& remap) {
    auto* copy = new SurfDist;
    copy->settings_ = settings_;
    copy->settings_.map = nullptr;
    copy->title_ = title_;
    if (settings_.map) {
        RefTargetHandle map = remap.CloneRef(settings_.map);
        // A map that cannot be copied is shared.
        copy->ReplaceReference(0, map ? map : settings_.map);
    }
    return copy;
}
