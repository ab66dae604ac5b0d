#include "image/codecs.h"

#include <dlfcn.h>

#include <filesystem>

#include "core/dynlib.h"
#include "core/error.h"
#include "sdk/core.h"

namespace host {
namespace {

// The library stands beside the host's own.
std::string CodecsPath() {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&GetCOREInterface), &info) || !info.dli_fname) return "libvelmar_codecs.so";
    return (std::filesystem::path(info.dli_fname).parent_path() / "libvelmar_codecs.so").string();
}

const Codecs* LoadCodecs() {
    static DynLib library; // stays loaded to the end of the process
    const std::string path = CodecsPath();
    std::string reason;
    if (!library.Open(path, reason)) throw Error(path + ": cannot load the picture formats: " + reason);
    const auto entry = reinterpret_cast<CodecsEntryFn>(library.Symbol(kCodecsEntry));
    if (!entry) throw Error(path + ": this is not velmar's library of picture formats");
    return entry();
}

} // namespace

const Codecs& GetCodecs() {
    static const Codecs* const codecs = LoadCodecs();
    return *codecs;
}

} // namespace host
