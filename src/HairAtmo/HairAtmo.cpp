#include "HairAtmo/HairAtmo.h"

#include "Base/BaseAtmo/AtmoClassDesc.h"
#include "HairDLL/StringTable.h"

namespace {

constexpr int kNameText = 40006;

BaseAtmo* Make() {
    return new HairAtmo;
}

} // namespace

HairAtmo::HairAtmo() : BaseAtmo(false, *GetHairAtmoClassDesc()) {}

void HairAtmo::GetClassName(TSTR& s) {
    s = FindString(kNameText);
}

ClassDesc2* GetHairAtmoClassDesc() {
    static AtmoClassDesc desc({false, kNameText, HAIRATMO_CLASS_ID, "velmar", Make});
    return &desc;
}
