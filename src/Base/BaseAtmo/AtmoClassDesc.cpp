#include "Base/BaseAtmo/AtmoClassDesc.h"

#include "DebugTools/Assert.h"
#include "DebugTools/MemTracker.h"
#include "HRendAtm/HairRender.h"
#include "HairDLL/LibGlobals.h"
#include "HairDLL/StringTable.h"

AtmoClassDesc::AtmoClassDesc(const AtmoClass& c) : class_(c) {
    AddObjectBlocks(*this, c.fur);
}

void* AtmoClassDesc::Create(bool loading) {
    try {
        MEM_LOCATION();
        std::unique_ptr<BaseAtmo> object(class_.make());
        if (!loading) {
            object->SetName(ClassName());
            object->CreateMissingReferences();
            HairRender::EnsureRendererInScene();
        }
        return static_cast<ReferenceTarget*>(object.release());
    } catch (...) {
        diag::ReportException("in creating an object");
        return nullptr;
    }
}

const char* AtmoClassDesc::ClassName() {
    return FindString(class_.name);
}

void* AtmoClassDesc::HInstance() {
    return GetModuleHandle();
}
