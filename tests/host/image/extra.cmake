# Files are read back with the libraries themselves.
find_package(PkgConfig REQUIRED)
pkg_check_modules(OPENEXR REQUIRED IMPORTED_TARGET OpenEXR)
pkg_check_modules(OPENIMAGEIO REQUIRED IMPORTED_TARGET OpenImageIO)
target_link_libraries(${name} PRIVATE velmar_host_render PkgConfig::OPENEXR PkgConfig::OPENIMAGEIO)
