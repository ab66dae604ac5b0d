// What is mended of the scenes that Assimp makes of .fbx files.

#include <assimp/BaseImporter.h>
#include <assimp/scene.h>

#include <assimp/Importer.hpp>
#include <memory>
#include <set>

#include "import/fbx_guard.h"

namespace host {

namespace {

// Each bone once; the name of one that was there more than once.
std::string DropTwinBones(aiScene& scene) {
    std::set<const aiBone*> seen;
    std::string twin;
    for (unsigned m = 0; m < scene.mNumMeshes; ++m) {
        aiMesh& mesh = *scene.mMeshes[m];
        unsigned kept = 0;
        for (unsigned b = 0; b < mesh.mNumBones; ++b) {
            aiBone* const bone = mesh.mBones[b];
            if (seen.insert(bone).second) {
                mesh.mBones[kept++] = bone;
            } else {
                twin = bone->mName.C_Str();
            }
        }
        mesh.mNumBones = kept;
    }
    return twin;
}

// Opens what Assimp keeps for its own readers.
struct OpenReader : Assimp::BaseImporter {
    using Assimp::BaseImporter::InternReadFile;
};

// Assimp's reader, with a look at the scene before Assimp gets it, or deletes it when the reader fails.
class MendingReader : public Assimp::BaseImporter {
public:
    MendingReader(Assimp::BaseImporter* reader, std::string& twin) : reader_(reader), twin_(twin) {}

    bool CanRead(const std::string& file, Assimp::IOSystem* files, bool checkSignature) const override {
        return reader_->CanRead(file, files, checkSignature);
    }
    void SetupProperties(const Assimp::Importer* importer) override { reader_->SetupProperties(importer); }
    const aiImporterDesc* GetInfo() const override { return reader_->GetInfo(); }

protected:
    void InternReadFile(const std::string& file, aiScene* scene, Assimp::IOSystem* files) override {
        const auto read = &OpenReader::InternReadFile;
        try {
            (reader_.get()->*read)(file, scene, files);
        } catch (...) {
            DropTwinBones(*scene);
            throw;
        }
        twin_ = DropTwinBones(*scene);
    }

private:
    std::unique_ptr<Assimp::BaseImporter> reader_;
    std::string& twin_;
};

} // namespace

void MendTwinBones(Assimp::Importer& importer, std::string& twin) {
    Assimp::BaseImporter* const reader = importer.GetImporter("fbx");
    if (!reader || importer.UnregisterLoader(reader) != aiReturn_SUCCESS) return;
    importer.RegisterLoader(new MendingReader(reader, twin));
}

} // namespace host
