#The tests run the program itself.
add_dependencies(${name} velmar velmar_dlu)
# The progress lines are looked at in this process.
target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/apps/velmar/progress.cpp)
