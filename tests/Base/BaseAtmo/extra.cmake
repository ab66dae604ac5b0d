# Its tests fail on purpose.
target_sources(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/sanitizer_options.cpp)
