# The built library is loaded as a host loads it.
add_dependencies(${name} velmar_dlu)
# Its tests fail on purpose.
target_sources(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/sanitizer_options.cpp)
