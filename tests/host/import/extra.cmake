target_link_libraries(${name} PRIVATE velmar_host_import rapidcheck)
# Tests make packed arrays.
find_package(ZLIB REQUIRED)
target_link_libraries(${name} PRIVATE ZLIB::ZLIB)
