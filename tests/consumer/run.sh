#!/usr/bin/env bash
# Installs a build tree into a fresh prefix and builds and runs a program
# against it from outside the source tree, as a user would: "cmake" through
# find_package(OrvanCamera), "pkgconfig" in plain C through pkg-config, "java"
# with the installed jars.
# Usage: run.sh cmake|pkgconfig|java BUILD_DIR WORK_DIR [LOG_INCLUDE_DIR LOG_LIBRARY | JAVA]
# (liblog only lets the C program watch the worker).
set -euo pipefail
mode=$1 build=$2 work=$3
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work" && mkdir -p "$work"
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >"$work/install.log" || { cat "$work/install.log"; exit 1; }
libdir=$(dirname "$(dirname "$(find "$prefix" -name orvan-camera.pc)")")

case $mode in
cmake)
  # The versioned library with both links, the jars, and no header of the tests.
  test "$(readlink "$libdir/libcam.common.orvan.so")" = libcam.common.orvan.so.1
  test "$(readlink "$libdir/libcam.common.orvan.so.1")" = libcam.common.orvan.so.1.0.0
  test -f "$prefix/share/java/orvan-media.jar"
  if find "$prefix/include" -path '*support*' | grep -q .; then echo "test headers installed"; exit 1; fi
  cmake -S "$here/cmake" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" >"$work/cmake.log" 2>&1 &&
    cmake --build "$work/cmake" -j2 >>"$work/cmake.log" 2>&1 || { cat "$work/cmake.log"; exit 1; }
  "$work/cmake/consumer"
  ;;
pkgconfig)
  log_include=$4 log_library=$5
  export PKG_CONFIG_PATH=$libdir/pkgconfig
  # shellcheck disable=SC2046  # pkg-config's words are separate arguments
  cc -std=c11 -Wall -Wextra -Werror "$here/pkgconfig/consumer.c" -o "$work/c-consumer" \
    $(pkg-config --cflags --libs orvan-camera) -I"$log_include" "$log_library" \
    -Wl,-rpath,"$libdir" -Wl,-rpath,"$(dirname "$log_library")"
  "$work/c-consumer"
  ;;
java)
  jars=$prefix/share/java/orvan-media.jar:$prefix/share/java/android-host.jar
  "$4" -Djava.library.path="$libdir" -Xcheck:jni -cp "$jars" "$here/java/Consumer.java"
  ;;
*) echo "usage: $0 cmake|pkgconfig|java BUILD_DIR WORK_DIR [LOG_INCLUDE_DIR LOG_LIBRARY | JAVA]" >&2; exit 2 ;;
esac
