#!/usr/bin/env bash
# Installs the Debian packages a build needs, only those missing.
#   install-deps.sh base   build, tests and demo
#   install-deps.sh bench  base plus the benchmark peers
#   install-deps.sh fuzz   base plus clang with libFuzzer
set -euo pipefail

base=(
  cmake make g++ pkg-config
  libgtest-dev libgmock-dev
  android-liblog-dev
  libjpeg62-turbo-dev
  libimagequant-dev
  openjdk-17-jdk-headless junit5
  libegl-dev libgles-dev libegl-mesa0 libgl1-mesa-dri libx11-dev libxcomposite-dev
  xvfb xauth x11-apps
  libsimde-dev
  libopencv-features2d-dev
  fonts-dejavu-core
)
bench=(libbenchmark-dev libyuv-dev libopencv-dev libturbojpeg0-dev)
fuzz=(clang libclang-rt-14-dev)

want=("${base[@]}")
if [ "${1:-base}" = "bench" ]; then want+=("${bench[@]}"); fi
if [ "${1:-base}" = "fuzz" ]; then want+=("${fuzz[@]}"); fi

missing=()
for p in "${want[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing missing packages: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
