target_link_libraries(${name} PRIVATE velmar_host_scene velmar_host_render)
