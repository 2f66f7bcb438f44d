# Helpers the subsystem folders use to declare what they build and what they
# publish.

# ov_add_objects(<name> <source>...): the object library ov_<name>, compiled
# once and linked into the shared library. Tests and benchmarks that need its
# hidden internals link the same objects.
function(ov_add_objects name)
  add_library(ov_${name} OBJECT ${ARGN})
  target_link_libraries(ov_${name} PUBLIC ov_base)
  set_property(GLOBAL APPEND PROPERTY OV_OBJECT_LIBRARIES ov_${name})
endfunction()

# ov_public_headers(<header>...): the headers of this folder that a consumer
# sees, installed as include/orvan/<folder>/<header>. Headers not listed are
# internal to the library and its tests.
function(ov_public_headers)
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  foreach(header IN LISTS ARGN)
    if(NOT EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${header})
      message(FATAL_ERROR "Public header ${folder}/${header} does not exist")
    endif()
  endforeach()
  install(FILES ${ARGN} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orvan/${folder} COMPONENT devel)
endfunction()
