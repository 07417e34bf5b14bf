# The host and the function library of the main tree, built into the tree
# that includes this file with the compile options set there so far, for a
# test program that loads the library by name as the shell does. The
# sanitizer runtime lives in that program, which lends its symbols to both
# libraries when they are loaded, so they are linked without --no-undefined.
set(KOVO_TESTS OFF CACHE BOOL "" FORCE)
set(KOVO_BENCHMARKS OFF CACHE BOOL "" FORCE)
add_subdirectory(${KOVO_ROOT} kovo EXCLUDE_FROM_ALL)
foreach(library kovovmmt kovovmf)
  get_target_property(options ${library} LINK_OPTIONS)
  list(REMOVE_ITEM options -Wl,--no-undefined)
  set_target_properties(${library} PROPERTIES LINK_OPTIONS "${options}")
endforeach()
