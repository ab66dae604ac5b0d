#pragma once
// The hair object: long hair styled by model hairs.

#include "Base/BaseAtmo.h"

inline constexpr Class_ID HAIRATMO_CLASS_ID{0x6d707903, 0x0614216f};

/// "velmar". Its lengths are factors of its model hairs'; without model hairs it grows nothing.
class HairAtmo : public BaseAtmo {
public:
    HairAtmo();
    Class_ID ClassID() override { return HAIRATMO_CLASS_ID; }
    void GetClassName(TSTR& s) override;

protected:
    BaseAtmo* NewInstance() const override { return new HairAtmo; }
};

/// The class's descriptor. Create(false) fills in the defaults of a new object and puts the renderer into the scene.
ClassDesc2* GetHairAtmoClassDesc();
