find_package(rapidcheck REQUIRED)
target_link_libraries(${name} PRIVATE velmar_host_render rapidcheck rapidcheck_gtest)
