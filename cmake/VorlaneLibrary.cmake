# vl_library(name SOURCES ... DEPENDS ... [PRIVATE_DEPENDS ...]): one static library a folder.
# Every library is also noted in the global property VL_LIBRARIES, which the tests and fuzz targets link.
function(vl_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC vl_flags ${arg_DEPENDS} PRIVATE ${arg_PRIVATE_DEPENDS})
  set_property(GLOBAL APPEND PROPERTY VL_LIBRARIES ${name})
  if(VL_PCH)
    # The heavy standard headers nearly every file reads; a library that links its base reuses nothing across
    # targets, so the set stays small.
    target_precompile_headers(${name} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:<algorithm>> $<$<COMPILE_LANGUAGE:CXX>:<functional>>
                              $<$<COMPILE_LANGUAGE:CXX>:<memory>> $<$<COMPILE_LANGUAGE:CXX>:<string>>
                              $<$<COMPILE_LANGUAGE:CXX>:<vector>>)
  endif()
endfunction()
