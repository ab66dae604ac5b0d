target_link_libraries(${name} PRIVATE velmar_host_scene velmar_host_render)
find_package(PkgConfig REQUIRED)
pkg_check_modules(OPENEXR REQUIRED IMPORTED_TARGET OpenEXR)
target_link_libraries(${name} PRIVATE PkgConfig::OPENEXR)
