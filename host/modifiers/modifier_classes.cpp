#include "modifiers/modifier_classes.h"

#include "core/host_classes.h"
#include "modifiers/deform_modifiers.h"
#include "modifiers/mesh_cache.h"
#include "modifiers/mesh_select.h"
#include "modifiers/morph.h"
#include "modifiers/skin.h"
#include "modifiers/smooth.h"

namespace host {

const std::vector<ClassDesc*>& ModifierClasses() {
    static SimpleClassDesc<NormalFlipModifier> flip("Normal Flip", OSM_CLASS_ID, NORMAL_FLIP_CLASS_ID);
    static SimpleClassDesc<SkinModifier> skin("Skin", OSM_CLASS_ID, SKIN_CLASS_ID);
    static SimpleClassDesc<MorphModifier> morph("Morph", OSM_CLASS_ID, MORPH_CLASS_ID);
    static SimpleClassDesc<MeshCacheModifier> cache("Mesh Cache", OSM_CLASS_ID, MESH_CACHE_CLASS_ID);
    static const std::vector<ClassDesc*> classes{MeshSelectDesc(),
                                                 SmoothModifierDesc(),
                                                 &flip,
                                                 XFormModifierDesc(),
                                                 BendModifierDesc(),
                                                 NoiseModifierDesc(),
                                                 &skin,
                                                 &morph,
                                                 &cache};
    return classes;
}

} // namespace host
