# Sanitizers leave functions of their own behind.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT VELMAR_SANITIZE)
  find_package(Python3 COMPONENTS Interpreter REQUIRED)
  add_test(NAME Kernels.LeaveNothingBehindThatOtherFilesShare
           COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/tools/check_kernels.py $<TARGET_OBJECTS:velmar_plugin>
           COMMAND_EXPAND_LISTS)
endif()
