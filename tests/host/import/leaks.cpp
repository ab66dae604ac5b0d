// Assimp loses memory of files that it refuses midway; that is not ours to find.

extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libassimp.so";
}
