# The tests run the program itself and read its pictures.
add_dependencies(${name} velmar velmar_dlu)
target_link_libraries(${name} PRIVATE velmar_host_scene velmar_host_render)
