find_package(rapidcheck REQUIRED)
target_link_libraries(${name} PRIVATE rapidcheck rapidcheck_gtest)
