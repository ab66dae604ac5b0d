#include "FurAtmo/FurAtmo.h"

#include "Base/BaseAtmo/AtmoClassDesc.h"
#include "HairDLL/StringTable.h"

namespace {

constexpr int kNameText = 40003;

BaseAtmo* Make() {
    return new FurAtmo;
}

} // namespace

FurAtmo::FurAtmo() : BaseAtmo(true, *GetFurAtmoClassDesc()) {}

void FurAtmo::GetClassName(TSTR& s) {
    s = FindString(kNameText);
}

ClassDesc2* GetFurAtmoClassDesc() {
    static AtmoClassDesc desc({true, kNameText, FURATMO_CLASS_ID, "lanvo", Make});
    return &desc;
}
