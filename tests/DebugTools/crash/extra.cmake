# Private headers of the diagnostics floor, as "logger/..." and "platform/...".
target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/../DebugTools/src)
# Without position independence the program lies low in memory, where the module list looks; with debug information its
# crashing functions have lines and variables.
set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
target_compile_options(${name} PRIVATE -fno-pie)
target_link_options(${name} PRIVATE -no-pie)
set_source_files_properties(${CMAKE_CURRENT_SOURCE_DIR}/${folder}/crashes.cpp PROPERTIES COMPILE_OPTIONS "-g;-O0")
# Its tests fail on purpose.
target_sources(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/sanitizer_options.cpp)
