find_package(rapidcheck REQUIRED)
target_link_libraries(${name} PRIVATE rapidcheck rapidcheck_gtest)
# Private headers of the diagnostics floor, as "logger/..." and "platform/...".
target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/../DebugTools/src)
