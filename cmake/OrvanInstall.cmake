# cmake --install: the library with its SONAME links, the public headers under
# include/orvan/, the CMake package OrvanCamera (imported target orvan::camera)
# and the pkg-config module orvan-camera. The jars install from java/.
include(CMakePackageConfigHelpers)

set(OV_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/OrvanCamera)
install(TARGETS cam.common.orvan EXPORT OrvanCameraTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT runtime)
# The host stand-ins of libandroid and libjnigraphics go beside it, in a folder
# of their own so that they shadow nothing.
if(NOT ANDROID)
  install(TARGETS android jnigraphics
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/orvan COMPONENT runtime)
endif()
# The C interface header, for C and C++ consumers alike.
install(FILES include/orvan/orvan.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orvan COMPONENT devel)
install(EXPORT OrvanCameraTargets NAMESPACE orvan:: DESTINATION ${OV_CMAKE_DIR} COMPONENT devel)

configure_package_config_file(cmake/OrvanCameraConfig.cmake.in
  ${PROJECT_BINARY_DIR}/OrvanCameraConfig.cmake INSTALL_DESTINATION ${OV_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrvanCameraConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OrvanCameraConfig.cmake ${PROJECT_BINARY_DIR}/OrvanCameraConfigVersion.cmake
        DESTINATION ${OV_CMAKE_DIR} COMPONENT devel)

# The module locates its prefix from its own folder, so an installed tree can
# be moved (and `cmake --install --prefix` chosen late).
file(RELATIVE_PATH OV_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" OV_PC_TO_PREFIX ${OV_PC_TO_PREFIX})
list(TRANSFORM OV_JNI_INCLUDE_DIRS PREPEND -I OUTPUT_VARIABLE OV_PC_JNI_CFLAGS)
list(JOIN OV_PC_JNI_CFLAGS " " OV_PC_JNI_CFLAGS)
configure_file(cmake/orvan-camera.pc.in ${PROJECT_BINARY_DIR}/orvan-camera.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orvan-camera.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT devel)
