#include "import/assimp_read.h"

#include <assimp/Importer.hpp>
#include <exception>

namespace {

// A failed check of Assimp. intended: no std::exception; those it catches on the way, goes on with what it has, and may
// delete some of it twice.
struct FailedCheck {
    const char* expression;
};

} // namespace

namespace Assimp {

void aiAssertViolation(const char* expression, const char* file, int line);

// Debian's Assimp is built with its own checks, which abort the program. This takes the place of the library's
// function: a failed check becomes an error of the import, for all forms of file.
void aiAssertViolation(const char* expression, const char*, int) {
    throw FailedCheck{expression};
}

} // namespace Assimp

namespace host {

const aiScene* ReadByAssimp(Assimp::Importer& importer, const std::string& content, const char* extension,
                            std::string& error) {
    try {
        const aiScene* const scene = importer.ReadFileFromMemory(content.data(), content.size(), 0, extension);
        error = importer.GetErrorString();
        if (scene) return scene;
        // Of what is no std::exception, Assimp's text says nothing.
        if (const std::exception_ptr& thrown = importer.GetException()) std::rethrow_exception(thrown);
    } catch (const FailedCheck& failed) {
        error = std::string("failed check: ") + failed.expression;
    } catch (const std::exception& e) {
        error = e.what();
    }
    return nullptr;
}

} // namespace host
