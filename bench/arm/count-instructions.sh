#!/bin/sh
# ARM instructions executed per unit (pixel, pair or byte) by each NEON kernel
# and its C reference. qemu timings say nothing about ARM speed, so this
# counts instead: qemu-arm logs every translated block and every block it
# runs (-d in_asm,exec,nochain); the sum over runs of each block's
# instruction count, taken at two sizes, gives the cost per unit without the
# fixed start-up cost. Needs g++-arm-linux-gnueabihf and qemu-user-static.
#   bench/arm/count-instructions.sh [KERNEL...]
# ARM_CXX picks the compiler, e.g. ARM_CXX="clang++ --target=arm-linux-gnueabihf".
set -eu
ROOT=$(cd "$(dirname "$0")/../.." && pwd)
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT INT TERM

${ARM_CXX:-arm-linux-gnueabihf-g++} -std=c++17 -O2 -march=armv7-a -mfpu=neon -mfloat-abi=hard -static -I"$ROOT" \
  -o "$WORK/count" "$ROOT/bench/arm/count_kernels.cpp" "$ROOT/image/ConvertRows.cpp" \
  "$ROOT/image/ConvertRowsNEON.cpp" "$ROOT/supercapture/MergeKernels.cpp" \
  "$ROOT/supercapture/MergeKernelsNEON.cpp" "$ROOT/imgproc/StackBlur.cpp" "$ROOT/imgproc/StackBlurTables.cpp"

# Instructions executed by one run of the driver.
executed() {
  qemu-arm-static -L /usr/arm-linux-gnueabihf -d in_asm,exec,nochain -D "$WORK/log" "$WORK/count" "$@" || true
  awk '
    /^IN:/ { inblock = 1; pc = ""; n = 0; next }
    inblock && /^0x[0-9a-f]+:/ { if (pc == "") pc = substr($1, 3, 8); n++; next }
    inblock && !/^0x/ { if (pc != "") size[pc] = n; inblock = 0 }
    /^Trace/ { split($4, f, "/"); total += size[f[2]] }
    END { printf "%d\n", total }' "$WORK/log"
}

SMALL=2048
LARGE=18432
KERNELS=${*:-nv21-rgb i420-rgb yuyv-rgb rgb-yuyv rgb-nv21 nv21-yv12 merge-max merge-copy merge-add \
  result-lowbits result-mean stack-blur}
printf '%-16s %10s %10s %8s\n' kernel C NEON ratio
for k in $KERNELS; do
  for v in c neon; do
    a=$(executed "$k" "$v" $SMALL)
    b=$(executed "$k" "$v" $LARGE)
    eval "per_$v=\$(echo \"scale=2; ($b - $a) / ($LARGE - $SMALL)\" | bc)"
  done
  # nv21-yv12 moves n / 4 chroma pairs for n pixels: report per pair.
  if [ "$k" = nv21-yv12 ]; then
    per_c=$(echo "scale=2; $per_c * 4" | bc)
    per_neon=$(echo "scale=2; $per_neon * 4" | bc)
  fi
  printf '%-16s %10s %10s %7sx\n' "$k" "$per_c" "$per_neon" "$(echo "scale=1; $per_c / $per_neon" | bc)"
done
