#include "image/write_picture.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "core/error.h"
#include "image/output_file.h"
#include "image/write_exr.h"
#include "image/write_png.h"

namespace host {

namespace {

struct Form {
    const char* extension;
    void (*write)(const Picture&, OutputFile&, int threads);
};
constexpr Form kForms[] = {{".png", [](const Picture& p, OutputFile& file, int) { WritePng(p, file); }},
                           {".exr", WriteExr}};

const Form& FormOf(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    std::string known;
    for (const Form& form : kForms) {
        if (extension == form.extension) return form;
        known += (known.empty() ? "" : ", ") + std::string(form.extension);
    }
    const std::string found = extension.empty() ? "no extension" : "unknown extension '" + extension + "'";
    throw Error(path + ": cannot write a picture: " + found + ", expected one of " + known);
}

} // namespace

void WritePicture(const Picture& picture, const std::string& path, int threads) {
    const Form& form = FormOf(path);
    if (picture.Width() < 1 || picture.Height() < 1) throw Error(path + ": cannot write: the picture has no pixels");
    OutputFile file(path);
    try {
        form.write(picture, file, threads);
    } catch (const Error&) {
        throw;
    } catch (const std::exception& e) {
        throw Error(path + ": cannot write: " + e.what());
    }
    file.Commit();
}

void CheckPictureOutput(const std::string& path) {
    FormOf(path);
    const OutputFile probe(path);
}

} // namespace host
