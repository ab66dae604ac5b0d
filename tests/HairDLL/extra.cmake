# The built library is loaded as a host loads it.
add_dependencies(${name} velmar_dlu)
