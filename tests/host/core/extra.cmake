find_package(rapidcheck REQUIRED)
target_link_libraries(${name} PRIVATE rapidcheck rapidcheck_gtest)

# Small plug-in libraries, good and bad, for the loader's tests.
set(LOADER_PLUGINS good:VELMAR_GOOD noversion:VELMAR_NO_VERSION oldrelease:VELMAR_OLD_RELEASE
    taken:VELMAR_TAKEN_CLASS twice:VELMAR_SAME_CLASS_TWICE nodesc:VELMAR_MISSING_DESCRIPTOR)
foreach(entry ${LOADER_PLUGINS})
  string(REPLACE ":" ";" parts ${entry})
  list(GET parts 0 kind)
  list(GET parts 1 definition)
  add_library(loader_test_${kind} MODULE ${CMAKE_CURRENT_LIST_DIR}/plugins/test_plugin.cpp)
  target_compile_definitions(loader_test_${kind} PRIVATE ${definition})
  target_link_libraries(loader_test_${kind} PRIVATE velmar_host)
  set_target_properties(loader_test_${kind} PROPERTIES PREFIX "" SUFFIX .dlu BUILD_RPATH_USE_ORIGIN ON
                        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/loader_test)
  add_dependencies(${name} loader_test_${kind})
endforeach()
