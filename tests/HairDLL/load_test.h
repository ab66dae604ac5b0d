#pragma once
// A folder of its own with a copy of the built library.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "core/core.h"

class LoadTest : public testing::Test {
protected:
    LoadTest() : scope_(core), folder(FolderOfThisTest()) {
        std::filesystem::create_directories(folder);
        library = (folder / "velmar.dlu").string();
        std::filesystem::copy_file(std::string(VELMAR_BIN_DIR) + "/velmar.dlu", library,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    ~LoadTest() override { std::filesystem::remove_all(folder); }
    static std::filesystem::path FolderOfThisTest() {
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        return std::filesystem::temp_directory_path() / ("velmar_load_" + std::to_string(getpid()) + "_" + name);
    }
    std::string TextOf(const std::filesystem::path& name) const {
        std::ifstream in(folder / name, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
    std::string LogText() const { return TextOf("velmar.log"); }

    host::Core core;
    host::Core::Scope scope_;
    std::filesystem::path folder;
    std::string library;
};
