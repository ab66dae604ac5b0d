#pragma once
// Tests that write files.

#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

namespace host {

/// A folder of its own for every test, deleted afterwards.
class FolderTest : public testing::Test {
protected:
    FolderTest()
        : folder_(std::filesystem::temp_directory_path() /
                  ("velmar_" + std::to_string(getpid()) + "_" +
                   testing::UnitTest::GetInstance()->current_test_info()->name())) {
        std::filesystem::create_directories(folder_);
    }
    ~FolderTest() override { std::filesystem::remove_all(folder_); }
    std::string Path(const std::string& name) const { return (folder_ / name).string(); }

    std::filesystem::path folder_;
};

} // namespace host
