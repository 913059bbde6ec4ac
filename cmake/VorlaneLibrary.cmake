# vl_library(name SOURCES ... DEPENDS ... [PRIVATE_DEPENDS ...]): one static library a folder.
# Every library is also noted in the global property VL_LIBRARIES, which the tests and fuzz targets link.
#
# All libraries share one precompiled header with the standard headers that most of their files read.
if(VL_PCH)
  file(WRITE ${CMAKE_BINARY_DIR}/vl_pch.cpp.in "// Holds the precompiled header.\n")
  configure_file(${CMAKE_BINARY_DIR}/vl_pch.cpp.in ${CMAKE_BINARY_DIR}/vl_pch.cpp COPYONLY)
  add_library(vl_pch STATIC ${CMAKE_BINARY_DIR}/vl_pch.cpp)
  target_link_libraries(vl_pch PRIVATE vl_flags)
  target_precompile_headers(vl_pch PRIVATE <algorithm> <cstdint> <functional> <memory> <string> <string_view>
                            <unordered_map> <vector>)
endif()

function(vl_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC vl_flags ${arg_DEPENDS} PRIVATE ${arg_PRIVATE_DEPENDS})
  set_property(GLOBAL APPEND PROPERTY VL_LIBRARIES ${name})
  if(VL_PCH)
    target_precompile_headers(${name} REUSE_FROM vl_pch)
  endif()
endfunction()
