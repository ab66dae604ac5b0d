#pragma once
// Surface distributions as objects of the scene.

#include <string>

#include "Base/SurfDist/SurfDistSettings.h"
#include "sdk/interval.h"
#include "sdk/mtl.h"
#include "sdk/properties.h"

inline constexpr Class_ID SURFDIST_CLASS_ID{0x4cc91804, 0x72ef7a4d};

/// How a parameter varies across the emitter's surface. The value of a reference parameter of the hair and fur objects;
/// its one reference is the map. Main thread only; generation reads the plain Settings().
class SurfDist : public ReferenceTarget, public IScriptProperties {
public:
    SurfDist() = default;
    ~SurfDist() override { DeleteAllRefs(); }

    const SurfDistSettings& Settings() const { return settings_; }
    /// Takes over everything, numbers outside their ranges brought to the nearest end; one message to the dependents.
    void SetSettings(const SurfDistSettings& settings);
    void SetEnabled(bool on);
    Texmap* GetMap() const { return settings_.map; }
    /// False when the map depends on this distribution.
    bool SetMap(Texmap* map);
    const std::string& Title() const { return title_; }
    void SetTitle(const std::string& text) { title_ = text; }

    /// Brings the map to `t` where the distribution reads it; `valid` is narrowed.
    void Update(TimeValue t, Interval& valid);

    // Settings files: one section a distribution.
    void SaveToINI(const char* file, const char* section) const;
    /// False, changing nothing, when the section has no usable "Enabled". A key that is missing keeps its value; a map
    /// is looked up by name in the scene and stays empty when there is none.
    bool LoadFromINI(const char* file, const char* section);

    // Script properties.
    std::vector<TSTR> ListProperties() override;
    bool GetProperty(const TSTR& name, ScriptValue& value, TSTR& error) override;
    bool SetProperty(const TSTR& name, const ScriptValue& value, TSTR& error) override;
    bool Call(const TSTR& name, const std::vector<ScriptValue>& args, ScriptValue& result, TSTR& error) override;

    Class_ID ClassID() override { return SURFDIST_CLASS_ID; }
    SClass_ID SuperClassID() override { return REF_MAKER_CLASS_ID; }
    void GetClassName(TSTR& s) override;
    void* GetInterface(uint32_t id) override;
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? settings_.map : nullptr; }
    void SetReference(int i, RefTargetHandle target) override;
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override { return i == 0 ? settings_.map : nullptr; }
    TSTR SubAnimName(int) override { return "Map"; }
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    void Changed();

    SurfDistSettings settings_;
    std::string title_;
};
