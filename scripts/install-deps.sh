#!/usr/bin/env bash
# Installs the Debian packages a build needs, only those missing.
#   install-deps.sh base           build, tests and demo
#   install-deps.sh bench          base plus the benchmark peers
#   install-deps.sh arm [SYSROOT]  base plus the armhf cross compiler and qemu;
#                                  the armhf libraries are unpacked into SYSROOT
#                                  (default build-armhf-sysroot/ of the checkout)
#   install-deps.sh fuzz           base plus clang with libFuzzer
set -euo pipefail

base=(
  cmake make g++ pkg-config
  libgtest-dev libgmock-dev
  android-liblog-dev
  libjpeg62-turbo-dev
  libimagequant-dev
  libpng-dev
  openjdk-17-jdk-headless junit5
  libegl-dev libgles-dev libegl-mesa0 libgl1-mesa-dri libx11-dev libxcomposite-dev
  xvfb xauth x11-apps
  libsimde-dev
  libopencv-features2d-dev
  fonts-dejavu-core
)
bench=(libbenchmark-dev libyuv-dev libopencv-dev libturbojpeg0-dev)
fuzz=(clang libclang-rt-14-dev)
arm=(g++-arm-linux-gnueabihf qemu-user-static)
# armhf packages unpacked into the sysroot. Multiarch installs of armhf
# development packages fail on mirrors whose armhf and amd64 indexes are out of
# step, so the .debs are downloaded and extracted instead. Their runtime needs
# beyond these (libc, libstdc++, libgomp) come with the cross toolchain.
arm_sysroot_pkgs=(
  android-liblog android-liblog-dev
  libjpeg62-turbo libjpeg62-turbo-dev
  libgtest-dev
  libimagequant0 libimagequant-dev
  libglvnd0 libegl1 libegl-dev libgles2 libgles-dev libgl-dev
  libsimde-dev
)

mode="${1:-base}"
want=("${base[@]}")
case "$mode" in
  base) ;;
  bench) want+=("${bench[@]}") ;;
  arm) want+=("${arm[@]}") ;;
  fuzz) want+=("${fuzz[@]}") ;;
  *) echo "usage: $0 [base|bench|fuzz|arm [SYSROOT]]" >&2; exit 2 ;;
esac

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive

# apt-get update exits with 100 when one index file is unusable (seen with the
# armhf indexes) even though the others were read; later steps fail on their
# own if a package really is unavailable.
apt_update() {
  local rc=0
  $sudo apt-get update -qq || rc=$?
  if [ "$rc" -ne 0 ] && [ "$rc" -ne 100 ]; then exit "$rc"; fi
}

missing=()
for p in "${want[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
updated=0
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing missing packages: ${missing[*]}"
  apt_update
  updated=1
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

[ "$mode" = arm ] || exit 0

root="$(cd "$(dirname "$0")/.." && pwd)"
sysroot="${2:-$root/build-armhf-sysroot}"
stamp="$sysroot/.packages"
if [ -f "$stamp" ] && [ "$(cat "$stamp")" = "${arm_sysroot_pkgs[*]}" ]; then exit 0; fi

if ! dpkg --print-foreign-architectures | grep -qx armhf; then
  $sudo dpkg --add-architecture armhf
  updated=0
fi
[ "$updated" -eq 1 ] || apt_update

echo "Unpacking armhf packages into $sysroot"
rm -rf "$sysroot"
mkdir -p "$sysroot/debs"
pkgs=()
for p in "${arm_sysroot_pkgs[@]}"; do
  # Architecture-independent packages have no armhf flavour to ask for.
  if [ "$(apt-cache show --no-all-versions "$p" | sed -n 's/^Architecture: //p' | head -1)" = all ]; then
    pkgs+=("$p")
  else
    pkgs+=("$p:armhf")
  fi
done
# _apt must be able to write there, or apt warns and downloads unsandboxed.
chmod 777 "$sysroot/debs"
(cd "$sysroot/debs" && apt-get download -q "${pkgs[@]}")
for deb in "$sysroot"/debs/*.deb; do dpkg-deb -x "$deb" "$sysroot"; done
echo "${arm_sysroot_pkgs[*]}" >"$stamp"
