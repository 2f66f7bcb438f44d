# Cross build for 32-bit ARM (ARMv7-A with NEON, hard float) with Debian's
# arm-linux-gnueabihf toolchain; test programs run under qemu-user.
#
# The C library comes with the toolchain (/usr/arm-linux-gnueabihf). The armhf
# builds of liblog, libjpeg-turbo, GoogleTest, EGL/GLES, SIMDe and libimagequant
# (a test oracle) are unpacked into a separate folder by
# `scripts/install-deps.sh arm`: by default build-armhf-sysroot/ of this
# checkout, or $OV_ARM_SYSROOT.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7-a)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

if(DEFINED ENV{OV_ARM_SYSROOT})
  set(OV_ARM_SYSROOT "$ENV{OV_ARM_SYSROOT}")
else()
  get_filename_component(OV_ARM_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build-armhf-sysroot" ABSOLUTE)
endif()
if(NOT EXISTS "${OV_ARM_SYSROOT}/.packages")
  message(FATAL_ERROR "No armhf libraries in ${OV_ARM_SYSROOT}: run scripts/install-deps.sh arm")
endif()
set(OV_ARM_LIBDIR "${OV_ARM_SYSROOT}/usr/lib/arm-linux-gnueabihf")

# libjpeg's jconfig.h sits in the multiarch include folder, which the compiler
# only searches in its own tree. The EGL library pulls in libGLdispatch.
set(OV_ARM_FLAGS "-march=armv7-a -mfpu=neon -mfloat-abi=hard -isystem ${OV_ARM_SYSROOT}/usr/include/arm-linux-gnueabihf")
set(CMAKE_C_FLAGS_INIT "${OV_ARM_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "${OV_ARM_FLAGS}")
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,-rpath-link,${OV_ARM_LIBDIR}")
endforeach()

set(CMAKE_FIND_ROOT_PATH "${OV_ARM_SYSROOT}" /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# JNI code needs only the headers, and the host JDK's are architecture-neutral
# on Linux (jni_md.h included). There is no ARM JVM here: nothing links the
# JVM libraries on this build, FindJNI merely insists on finding them.
if(DEFINED ENV{JAVA_HOME})
  set(OV_JDK "$ENV{JAVA_HOME}")
else()
  find_program(OV_JAVAC javac REQUIRED)
  file(REAL_PATH "${OV_JAVAC}" OV_JAVAC)
  get_filename_component(OV_JDK "${OV_JAVAC}/../.." ABSOLUTE)
endif()
set(JAVA_INCLUDE_PATH "${OV_JDK}/include" CACHE PATH "")
set(JAVA_INCLUDE_PATH2 "${OV_JDK}/include/linux" CACHE PATH "")
set(JAVA_AWT_INCLUDE_PATH "${OV_JDK}/include" CACHE PATH "")
set(JAVA_JVM_LIBRARY "${OV_JDK}/lib/server/libjvm.so" CACHE FILEPATH "")
set(JAVA_AWT_LIBRARY "${OV_JDK}/lib/libjawt.so" CACHE FILEPATH "")

# qemu's -L prefix serves the toolchain's C library; the unpacked armhf
# libraries are found through the guest's library path.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static -L /usr/arm-linux-gnueabihf
    -E "LD_LIBRARY_PATH=${OV_ARM_LIBDIR}:${OV_ARM_LIBDIR}/android")
