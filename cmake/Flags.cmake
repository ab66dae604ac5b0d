# Flags that every target of the tree shares.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

find_program(VELMAR_CCACHE ccache)
if(VELMAR_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${VELMAR_CCACHE})
endif()

# Results must be the same bit for bit on every machine and at every optimisation level: a multiply and an add are
# never contracted into one rounding, and no fast-math flag is ever given. x86-64-v2 has no fused multiply-add at all.
add_compile_options(-ffp-contract=off -fno-math-errno -Wall -Wextra -Wno-unused-parameter)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  add_compile_options(-march=x86-64-v2)
endif()
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g -DNDEBUG")

if(VELMAR_SANITIZE)
  add_compile_options(-fsanitize=${VELMAR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -g1)
  add_link_options(-fsanitize=${VELMAR_SANITIZE})
endif()

find_package(Threads REQUIRED)
