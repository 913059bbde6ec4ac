# vl_library(name SOURCES ... DEPENDS ...): one static library a folder.
function(vl_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC vl_flags ${arg_DEPENDS} PRIVATE ${arg_PRIVATE_DEPENDS})
endfunction()
