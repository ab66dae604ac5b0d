// The plug-in loader: what it registers and what it refuses.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "core/core.h"

namespace {

const std::string kDir = std::string(VELMAR_BIN_DIR) + "/loader_test/";

struct LoaderTest : testing::Test {
    host::ClassDirectory classes;
    host::PluginLoader loader{classes};
    size_t before = classes.All().size();

    // The error without the path in front.
    std::string Refused(const std::string& path) {
        std::string error;
        EXPECT_FALSE(loader.Load(path, error));
        EXPECT_EQ(error.find('\n'), std::string::npos);
        EXPECT_TRUE(error.starts_with(path + ": ")) << error;
        EXPECT_EQ(classes.All().size(), before) << "nothing stays registered";
        EXPECT_TRUE(loader.Loaded().empty());
        return error.substr(std::min(error.size(), path.size() + 2));
    }
};

TEST_F(LoaderTest, RegistersTheClassesOfAGoodLibrary) {
    std::string error;
    ASSERT_TRUE(loader.Load(kDir + "loader_test_good.dlu", error)) << error;
    ASSERT_EQ(loader.Loaded().size(), 1u);
    EXPECT_EQ(loader.Loaded()[0].description, "test plug-in");
    EXPECT_EQ(loader.Loaded()[0].version, SDK_VERSION_WORD + 1);
    EXPECT_FALSE(loader.Loaded()[0].canDefer);
    EXPECT_EQ(classes.All().size(), before + 2);
    ClassDesc* const desc = classes.Find(REF_TARGET_CLASS_ID, {0x1234, 0x5678});
    ASSERT_NE(desc, nullptr);
    EXPECT_STREQ(desc->ClassName(), "Widget");
    EXPECT_NE(classes.Find(HELPER_CLASS_ID, {0x1234, 0x5678}), nullptr);
    EXPECT_EQ(classes.FindByName(HELPER_CLASS_ID, "Widget"), classes.Find(HELPER_CLASS_ID, {0x1234, 0x5678}));
    EXPECT_EQ(classes.FindByName(CAMERA_CLASS_ID, "Widget"), nullptr);
}

TEST_F(LoaderTest, ALibraryCannotBeLoadedTwice) {
    std::string error;
    ASSERT_TRUE(loader.Load(kDir + "loader_test_good.dlu", error));
    EXPECT_FALSE(loader.Load(kDir + "loader_test_good.dlu", error));
    EXPECT_NE(
        error.find("class 'Widget' (super class 0x200, class id (0x00001234, 0x00005678)) is taken by 'Widget' of " +
                   kDir + "loader_test_good.dlu"),
        std::string::npos)
        << error;
}

TEST_F(LoaderTest, MissingFilesAndFolders) {
    EXPECT_EQ(Refused(kDir + "none.dlu"), "no such file");
    EXPECT_EQ(Refused(VELMAR_BIN_DIR), "not a file");
}

TEST_F(LoaderTest, FilesThatAreNoLibrary) {
    const std::string path = testing::TempDir() + "/velmar_no_library.dlu";
    std::ofstream(path) << "just text\n";
    EXPECT_TRUE(Refused(path).starts_with("not a loadable library (")) << path;
    std::filesystem::remove(path);
}

TEST_F(LoaderTest, MissingEntryPoint) {
    EXPECT_EQ(Refused(kDir + "loader_test_noversion.dlu"), "entry point 'LibVersion' is missing");
}

TEST_F(LoaderTest, AnotherRelease) {
    EXPECT_EQ(Refused(kDir + "loader_test_oldrelease.dlu"), "built for release 13800, this host is release 13900");
}

TEST_F(LoaderTest, ClassTakenByTheHost) {
    EXPECT_EQ(Refused(kDir + "loader_test_taken.dlu"),
              "class 'Widget' (super class 0x20, class id (0x00001001, 0x00000000)) is taken by 'Target Camera' of the "
              "host");
}

TEST_F(LoaderTest, ClassTwiceInOneLibrary) {
    EXPECT_EQ(Refused(kDir + "loader_test_twice.dlu"),
              "class 'Widget' (super class 0x200, class id (0x00001234, 0x00005678)) is taken by another class of the "
              "same library");
}

TEST_F(LoaderTest, ClassWithoutDescriptor) {
    EXPECT_EQ(Refused(kDir + "loader_test_nodesc.dlu"), "class 1 has no descriptor");
}

TEST(LoaderCore, ObjectsOfPluginsDieBeforeTheirCodeGoes) {
    host::Core core;
    std::string error;
    ASSERT_TRUE(core.Plugins().Load(kDir + "loader_test_good.dlu", error)) << error;
    ReferenceTarget* const made = core.CreateInstance(REF_TARGET_CLASS_ID, {0x1234, 0x5678});
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->ClassID(), Class_ID(0x1234, 0x5678));
    EXPECT_TRUE(core.Owner().Owns(made));
}

} // namespace
