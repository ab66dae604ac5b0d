# The tests run the program itself.
add_dependencies(${name} velmar velmar_dlu)
