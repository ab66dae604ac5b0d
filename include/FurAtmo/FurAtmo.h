#pragma once
// The fur object: short hair that leans and bends over the surface.

#include "Base/BaseAtmo.h"

inline constexpr Class_ID FURATMO_CLASS_ID{0x790b49f8, 0x74687d62};

/// "lanvo". Grows along the emitters' normals.
class FurAtmo : public BaseAtmo {
public:
    FurAtmo();
    Class_ID ClassID() override { return FURATMO_CLASS_ID; }
    void GetClassName(TSTR& s) override;

protected:
    BaseAtmo* NewInstance() const override { return new FurAtmo; }
};

/// The class's descriptor. Create(false) fills in the defaults of a new object and puts the renderer into the scene.
ClassDesc2* GetFurAtmoClassDesc();
