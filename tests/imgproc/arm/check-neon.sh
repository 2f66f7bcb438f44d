#!/usr/bin/env bash
# Builds the NEON blur and blend for 32-bit ARM and runs them under qemu
# against the scalar definitions. Needs g++-arm-linux-gnueabihf and
# qemu-user-static (not part of the normal build).
set -euo pipefail
root=$(cd "$(dirname "$0")/../../.." && pwd)
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
arm-linux-gnueabihf-g++ -std=c++17 -O2 -Wall -Wextra -Werror -march=armv7-a -mfpu=neon -mfloat-abi=hard \
  -I"$root" "$root/tests/imgproc/arm/NeonCheck.cpp" "$root/imgproc/StackBlur.cpp" \
  "$root/imgproc/StackBlurTables.cpp" "$root/imgproc/AlphaBlendNeon.cpp" -o "$out/neon-check"
qemu-arm-static -L /usr/arm-linux-gnueabihf "$out/neon-check"
