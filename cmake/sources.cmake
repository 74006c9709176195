# Collects the C++ sources below the given folders into OUT. New files are picked up at the
# next build without touching the CMake lists.
function(quenlo_sources OUT)
  set(all)
  foreach(dir IN LISTS ARGN)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS
      ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.h)
    list(APPEND all ${found})
  endforeach()
  set(${OUT} ${all} PARENT_SCOPE)
endfunction()
