// What is refused of .fbx files before they are read.

#include "import/fbx_guard.h"

#include <zlib.h>

#include <functional>

#include "import/imported_scene.h"
#include "import_helpers.h"

using namespace host;
using namespace import_test;

namespace {

std::string CheckError(const std::string& content) {
    return ErrorOf([&] { CheckFbx("m.fbx", content); });
}

std::string Repeated(const std::string& what, int times) {
    std::string out;
    for (int i = 0; i < times; ++i) out += what;
    return out;
}

const std::string kDeep = "m.fbx: is nested too deeply, expected at most 64 levels";
const std::string kCircle = "m.fbx: has an object that hangs below itself, expected a tree";
const std::string kArray = "m.fbx: has an array that claims more numbers than the file can hold";
const std::string kLayer = "m.fbx: has a layer without a number, expected one";
const std::string kFast = "m.fbx: has keys that change too much within too little time, expected slower ones";
const std::string kPicture = "m.fbx: has a picture that is not base64, expected one that is";

TEST(FbxGuardText, Nesting) {
    EXPECT_EQ(CheckError(Repeated("a: {\n", 64) + Repeated("}\n", 64)), "");
    EXPECT_EQ(CheckError(Repeated("a: {\n", 65)), kDeep);
    EXPECT_EQ(CheckError(Repeated("a: {\n}\n", 1000)), "");
    EXPECT_EQ(CheckError(Repeated("a: \"{\"\n; {\n", 1000)), "");
    EXPECT_EQ(CheckError(Repeated("a: {\n", 1000000)), kDeep);
}

TEST(FbxGuardText, Links) {
    EXPECT_EQ(CheckError("C: \"OO\",1,2\nC: \"OO\",2,3\nC: \"OO\",1,3\n"), "");
    EXPECT_EQ(CheckError("C: \"OO\",1,2\nC: \"OP\",2,1, \"p\"\n"), kCircle);
    EXPECT_EQ(CheckError("C: \"XYZ\",9,9\n"), kCircle);
    EXPECT_EQ(CheckError("C: \"OO\" ; why\n , 9x , 9\n"), kCircle);
    EXPECT_EQ(CheckError("C: \"PP\",9,9\n"), "");
    EXPECT_EQ(CheckError("; C: \"OO\",9,9\n"), "");
    std::string chain;
    for (int i = 0; i < 1002; ++i)
        chain += std::string("C: \"OO\",") + std::to_string(i + 1) + "," + std::to_string(i) + "\n";
    EXPECT_EQ(CheckError(chain), "m.fbx: has objects more than 1000 levels deep");
}

TEST(FbxGuardText, Arrays) {
    EXPECT_EQ(CheckError("Vertices: *3 {\na: 1,2,3\n}"), "");
    EXPECT_EQ(CheckError("Vertices: *4000000000 {\na: 1,2,3\n}"), kArray);
    EXPECT_EQ(CheckError("Vertices: *99999999999999999999 {\na: 1\n}"), kArray);
    EXPECT_EQ(CheckError("Name: \"*4000000000\""), "");
}

TEST(FbxGuardText, Layers) {
    EXPECT_EQ(CheckError("Layer: 0 {\n}"), "");
    for (const char* const text : {"Layer: , {\n}", "Layer: {\n}", "Layer:", "Layer: Version: 1", "a: { Layer: }"})
        EXPECT_EQ(CheckError(text), kLayer) << text;
}

TEST(FbxGuardText, Pictures) {
    EXPECT_EQ(CheckError("Content: , \"iVBO\", \"Rw==\"\nType: \"x\"\n"), "");
    EXPECT_EQ(CheckError("Content: \"\"\n"), "");
    EXPECT_EQ(CheckError("Content: \"iV*O\"\n"), kPicture);
    EXPECT_EQ(CheckError("Content: \"iVBO\", \"i=BO\"\n"), kPicture);
    EXPECT_EQ(CheckError("Content: \"iVBO=\"\n"), kPicture);
    EXPECT_EQ(CheckError("Content: \"iVBO\", 12\n"), kPicture);
    EXPECT_EQ(CheckError("Content: \"iVBO\"\nand }"), kPicture);
    EXPECT_EQ(CheckError("Contents: \"iV*O\"\n"), "");
}

std::string Curve(const std::string& times, const std::string& values) {
    return "AnimationCurve: 1,\"\",\"\" {\nKeyTime: *9 {\na: " + times + "\n}\nKeyValueFloat: *9 {\na: " + values +
           "\n}\nKeyAttrRefCount: *1 {\na: 2\n}\n}\n";
}

TEST(FbxGuardText, Curves) {
    // 901 degrees are six steps of less than 180: there must be room for each.
    EXPECT_EQ(CheckError(Curve("0,6", "0,901")), "");
    EXPECT_EQ(CheckError(Curve("0,5", "0,901")), kFast);
    EXPECT_EQ(CheckError(Curve("0,+1,2", "0,1,-900")), kFast);
    EXPECT_EQ(CheckError(Curve("0,1", "0,179")), "");
    EXPECT_EQ(CheckError(Curve("5,4", "0,901")), "") << "refused by the reader itself";
    EXPECT_EQ(CheckError(Curve("0,4x", "0,901")), kFast);
    EXPECT_EQ(CheckError(Curve("0,900000000000", "0,inf")), kFast);
    EXPECT_EQ(CheckError(Curve("0,900000000000", "0,nan")), "");
    // Four million steps in a file, in one curve or in several.
    EXPECT_EQ(CheckError(Curve("0,900000000000", "0,7e8")), "");
    EXPECT_EQ(CheckError(Curve("0,900000000000", "0,8e8")), kFast);
    EXPECT_EQ(CheckError(Curve("0,900000000000", "0,4e8") + Curve("0,900000000000", "4e8,0")), kFast);
    // Curves do not go on in the next one.
    EXPECT_EQ(CheckError(Curve("0", "0") + Curve("1", "901")), "");
}

// A block of a binary file; `start` is where it begins, `below` what is inside, made for its place.
std::string Block(size_t start, const std::string& name, const std::string& values, int count,
                  const std::function<std::string(size_t)>& below = nullptr) {
    const size_t head = start + 13 + name.size() + values.size();
    const std::string inside = below ? below(head) + std::string(13, '\0') : std::string();
    return Bytes(uint32_t(head + inside.size())) + Bytes(uint32_t(count)) + Bytes(uint32_t(values.size())) +
           Bytes(uint8_t(name.size())) + name + values + inside;
}

std::string Binary(const std::function<std::string(size_t)>& blocks) {
    const std::string head = std::string("Kaydara FBX Binary  \0\x1a\0", 23) + Bytes(uint32_t(7400));
    return head + blocks(head.size()) + std::string(13, '\0');
}

std::string Nested(size_t start, int levels) {
    return Block(start, "a", "", 0,
                 levels > 1 ? [&](size_t at) { return Nested(at, levels - 1); } : std::function<std::string(size_t)>());
}

std::string LinkValues(const std::string& kind, int64_t child, int64_t parent) {
    return std::string("S") + Bytes(uint32_t(kind.size())) + kind + "L" + Bytes(child) + "L" + Bytes(parent);
}

std::string Array(char kind, uint32_t count, uint32_t packing, const std::string& stored) {
    return std::string(1, kind) + Bytes(count) + Bytes(packing) + Bytes(uint32_t(stored.size())) + stored;
}

std::string OneBlock(const std::string& name, const std::string& values, int count) {
    return Binary([&](size_t at) { return Block(at, name, values, count); });
}

TEST(FbxGuardBinary, Nesting) {
    EXPECT_EQ(CheckError(Binary([](size_t at) { return Nested(at, 65); })), "");
    EXPECT_EQ(CheckError(Binary([](size_t at) { return Nested(at, 66); })), kDeep);
}

TEST(FbxGuardBinary, Links) {
    EXPECT_EQ(CheckError(OneBlock("C", LinkValues("OO", 1, 2), 3)), "");
    EXPECT_EQ(CheckError(OneBlock("C", LinkValues("OO", 9, 9), 3)), kCircle);
    EXPECT_EQ(CheckError(OneBlock("C", LinkValues("OX", 9, 9), 3)), kCircle);
    EXPECT_EQ(CheckError(OneBlock("C", LinkValues("PP", 9, 9), 3)), "");
    EXPECT_EQ(CheckError(OneBlock("D", LinkValues("OO", 9, 9), 3)), "");
    const auto below = [](size_t at) { return Block(at, "C", LinkValues("OO", 9, 9), 3); };
    EXPECT_EQ(CheckError(Binary([&](size_t at) { return Block(at, "Connections", "", 0, below); })), kCircle);
}

TEST(FbxGuardBinary, Arrays) {
    EXPECT_EQ(CheckError(OneBlock("a", Array('d', 2, 0, std::string(16, '\0')), 1)), "");
    EXPECT_EQ(CheckError(OneBlock("a", Array('d', 3, 0, std::string(16, '\0')), 1)), kArray);
    // 8 bytes for a reader that counts them in 32 bits.
    EXPECT_EQ(CheckError(OneBlock("a", Array('d', 0x20000001, 0, std::string(8, '\0')), 1)), kArray);
    EXPECT_EQ(CheckError(OneBlock("a", Array('i', 2064, 1, std::string(8, '\0')), 1)), "");
    EXPECT_EQ(CheckError(OneBlock("a", Array('i', 2065, 1, std::string(8, '\0')), 1)), kArray);
}

TEST(FbxGuardBinary, Layers) {
    EXPECT_EQ(CheckError(OneBlock("Layer", std::string("I") + Bytes(int32_t(0)), 1)), "");
    EXPECT_EQ(CheckError(OneBlock("Layer", "", 0)), kLayer);
}

std::string BinaryCurve(const std::string& times, const std::string& values) {
    const auto below = [&](size_t at) {
        const std::string first = Block(at, "KeyTime", times, 1);
        return first + Block(at + first.size(), "KeyValueFloat", values, 1);
    };
    return Binary([&](size_t at) { return Block(at, "AnimationCurve", "", 0, below); });
}

std::string Deflated(const std::string& bytes) {
    uLongf size = compressBound(uLong(bytes.size()));
    std::string out(size, '\0');
    compress(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
             uLong(bytes.size()));
    out.resize(size);
    return out;
}

TEST(FbxGuardBinary, Curves) {
    const auto times = [](int64_t last) { return Bytes(int64_t(0)) + Bytes(last); };
    const std::string floats = Bytes(0.0f) + Bytes(901.0f), doubles = Bytes(0.0) + Bytes(901.0);
    EXPECT_EQ(CheckError(BinaryCurve(Array('l', 2, 0, times(6)), Array('f', 2, 0, floats))), "");
    EXPECT_EQ(CheckError(BinaryCurve(Array('l', 2, 0, times(5)), Array('f', 2, 0, floats))), kFast);
    EXPECT_EQ(CheckError(BinaryCurve(Array('l', 2, 1, Deflated(times(6))), Array('d', 2, 1, Deflated(doubles)))), "");
    EXPECT_EQ(CheckError(BinaryCurve(Array('l', 2, 1, Deflated(times(5))), Array('d', 2, 1, Deflated(doubles)))),
              kFast);
    // What cannot be unpacked is for the reader to refuse.
    const std::string cut = Deflated(times(5)).substr(0, 8);
    EXPECT_EQ(CheckError(BinaryCurve(Array('l', 2, 1, cut), Array('d', 2, 0, doubles))), "");
}

TEST(FbxGuardBinary, CutOffAnywhere) {
    const std::string whole = OneBlock("C", LinkValues("OO", 1, 2) + Array('f', 1, 0, "abcd"), 4);
    for (size_t size = 18; size <= whole.size(); ++size) EXPECT_EQ(CheckError(whole.substr(0, size)), "") << size;
}

TEST(FbxGuard, FailedChecksOfTheLibraryAreErrors) {
    const std::string content = ReadWholeFile(VELMAR_SOURCE_DIR "/fuzz/corpus/fbx/vertex_of_no_face.fbx");
    EXPECT_EQ(ErrorOf([&] { ImportFbx("m.fbx", content); }),
              "m.fbx: cannot be read as FBX (failed check: out_idx != nullptr)");
}

TEST(FbxGuard, BonesOfOneName) {
    const std::string file = VELMAR_SOURCE_DIR "/fuzz/corpus/fbx/bone_twice.fbx";
    const ImportedScene scene = ImportFbx(file, ReadWholeFile(file));
    ASSERT_EQ(scene.notes.size(), 1u);
    EXPECT_EQ(scene.notes[0], "several bones are called 'tip', only the first one counts");
    ASSERT_EQ(scene.skins.size(), 1u);
    EXPECT_EQ(scene.skins[0].joints.size(), 1u);
}

// Where Assimp gives up after it has put a bone in twice, it must not delete it twice either.
TEST(FbxGuard, BonesOfOneNameInRefusedFiles) {
    const auto errorOf = [](const std::string& name) {
        const std::string content = ReadWholeFile(VELMAR_SOURCE_DIR "/fuzz/corpus/fbx/" + name);
        return ErrorOf([&] { ImportFbx("m.fbx", content); });
    };
    EXPECT_EQ(errorOf("bone_twice_and_no_unit.fbx"),
              "m.fbx: cannot be read as FBX (FBX: The UnitScaleFactor must be non-zero)");
    EXPECT_EQ(errorOf("bone_twice_and_no_vertex.fbx"),
              "m.fbx: cannot be read as FBX (failed check: out_idx != nullptr)");
}

} // namespace
