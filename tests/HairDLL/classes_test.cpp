// The registry, linked directly, and the built library, loaded as a host loads it.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "HairDLL/ClassRegistry.h"
#include "HairDLL/LibGlobals.h"
#include "core/core.h"
#include "expected_classes.h"
#include "load_test.h"
#include "sdk/plugapi.h"

namespace {

void CheckDescriptor(ClassDesc* desc, const ExpectedClass& expected) {
    ASSERT_NE(desc, nullptr);
    EXPECT_STREQ(desc->ClassName(), expected.name);
    EXPECT_EQ(desc->SuperClassID(), expected.superClass) << expected.name;
    EXPECT_EQ(desc->ClassID(), expected.id) << expected.name;
    EXPECT_EQ(desc->IsPublic() != 0, expected.isPublic) << expected.name;
    EXPECT_STREQ(desc->Category(), expected.category) << expected.name;
    EXPECT_STREQ(desc->InternalName(), expected.internalName) << expected.name;
    EXPECT_EQ(dynamic_cast<ClassDesc2*>(desc) != nullptr, expected.withBlocks) << expected.name;
    EXPECT_EQ(desc->InitialRollupPageState(), 0x7fffffffu);
    EXPECT_TRUE(desc->OkToCreate(nullptr));
}

ReferenceTarget* Make(ClassDesc* desc) {
    return static_cast<ReferenceTarget*>(desc->Create(false));
}

/// The built library, loaded.
class LoadedLibrary {
public:
    explicit LoadedLibrary(const std::string& path) : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
        if (!handle_) ADD_FAILURE() << dlerror();
    }
    ~LoadedLibrary() {
        if (handle_) dlclose(handle_);
    }
    template <class Fn>
    Fn Get(const char* name) const {
        return reinterpret_cast<Fn>(dlsym(handle_, name));
    }

private:
    void* handle_;
};

} // namespace

TEST(ClassRegistry, SeventeenClassesInOrder) {
    static_assert(std::size(kExpectedClasses) == kNumLibraryClasses);
    for (int i = 0; i < kNumLibraryClasses; ++i) CheckDescriptor(GetLibraryClass(i), kExpectedClasses[i]);
}

TEST(ClassRegistry, NothingOutsideTheList) {
    EXPECT_EQ(GetLibraryClass(-1), nullptr);
    EXPECT_EQ(GetLibraryClass(17), nullptr);
    EXPECT_EQ(GetLibraryClass(1 << 30), nullptr);
}

TEST(ClassRegistry, SameDescriptorTwice) {
    for (int i = 0; i < kNumLibraryClasses; ++i) EXPECT_EQ(GetLibraryClass(i), GetLibraryClass(i));
}

TEST(ClassRegistry, CreateMakesDistinctObjectsButOneRenderer) {
    host::Core core;
    host::Core::Scope scope(core);
    for (int i = 0; i < kNumLibraryClasses; ++i) {
        const ExpectedClass& expected = kExpectedClasses[i];
        ReferenceTarget* const first = Make(GetLibraryClass(i));
        ReferenceTarget* const second = Make(GetLibraryClass(i));
        if (!expected.built) {
            EXPECT_EQ(first, nullptr) << expected.name;
            EXPECT_EQ(second, nullptr) << expected.name;
            continue;
        }
        ASSERT_NE(first, nullptr) << expected.name;
        EXPECT_EQ(first->ClassID(), expected.id);
        EXPECT_EQ(first->SuperClassID(), expected.superClass);
        TSTR name;
        first->GetClassName(name);
        EXPECT_EQ(name, expected.name);
        if (i == kRendererClass) {
            EXPECT_EQ(first, second);
            EXPECT_NE(first->GetParamBlock(0), nullptr);
        } else {
            EXPECT_NE(first, second) << expected.name;
        }
        first->DeleteThis();
        if (first != second) second->DeleteThis();
    }
}

TEST_F(LoadTest, EntryPoints) {
    const LoadedLibrary lib(library);
    const auto count = lib.Get<LibNumberClassesFn>("LibNumberClasses");
    const auto classDesc = lib.Get<LibClassDescFn>("LibClassDesc");
    const auto description = lib.Get<LibDescriptionFn>("LibDescription");
    const auto version = lib.Get<LibVersionFn>("LibVersion");
    const auto canDefer = lib.Get<CanAutoDeferFn>("CanAutoDefer");
    ASSERT_TRUE(count && classDesc && description && version && canDefer);
    EXPECT_EQ(count(), 17);
    EXPECT_EQ(version(), 0x364C2500u);
    EXPECT_EQ(canDefer(), 0u);
    const std::string begin = "velmar 1.7.0.82 For MAX 2010 (64 bit) , ";
    EXPECT_EQ(std::string(description()).substr(0, begin.size()), begin);
    EXPECT_EQ(classDesc(-1), nullptr);
    EXPECT_EQ(classDesc(17), nullptr);
    void* module = nullptr;
    for (int i = 0; i < 17; ++i) {
        CheckDescriptor(classDesc(i), kExpectedClasses[i]);
        EXPECT_EQ(classDesc(i)->HInstance() != nullptr, kExpectedClasses[i].ownsModule) << i;
        if (classDesc(i)->HInstance()) {
            EXPECT_TRUE(!module || module == classDesc(i)->HInstance());
            module = classDesc(i)->HInstance();
        }
    }
    EXPECT_EQ(classDesc(0), classDesc(0));
}

TEST_F(LoadTest, TheHostsLoaderTakesIt) {
    std::string error;
    host::Core loading;
    host::Core::Scope scope(loading);
    ASSERT_TRUE(loading.Plugins().Load(library, error)) << error;
    EXPECT_EQ(loading.Plugins().Loaded()[0].classes.size(), 17u);
    ReferenceTarget* const fur = loading.CreateInstance(0x1010, Class_ID(0x790b49f8, 0x74687d62));
    ASSERT_NE(fur, nullptr);
    EXPECT_EQ(loading.NumAtmospheric(), 1); // the renderer came along
    EXPECT_EQ(loading.CreateInstance(0x10, Class_ID(0x54d9504e, 0x48822ea3)), nullptr);
}

// A process of its own: a library may stay in memory after it was closed, but not beyond the end of its process.
TEST_F(LoadTest, TheLogBeginsAndEndsWithTheLibrary) {
    const auto load = [this] {
        std::string error;
        {
            host::Core loading;
            host::Core::Scope scope(loading);
            if (!loading.Plugins().Load(library, error)) std::exit(1);
            loading.CreateInstance(0x1010, Class_ID(0x790b49f8, 0x74687d62));
            loading.CreateInstance(0x10, Class_ID(0x54d9504e, 0x48822ea3));
        }
        std::exit(0);
    };
    EXPECT_EXIT(load(), testing::ExitedWithCode(0), "");
    const std::string log = LogText();
    EXPECT_EQ(log.find("velmar log begin"), 0u);
    EXPECT_NE(log.find("MAX Release: 13900"), std::string::npos);
    EXPECT_NE(log.find("Version: 1.7.0.82 For MAX 2010 (64 bit)"), std::string::npos);
    EXPECT_NE(log.find("class \"velmarView\" (super class 0x10) is not part of this version"), std::string::npos);
    EXPECT_NE(log.find("velmar log end"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder / "testfile"));
}
