target_link_libraries(${name} PRIVATE velmar_host_import rapidcheck)
