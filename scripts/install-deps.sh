#!/usr/bin/env bash
# Puts every build and test dependency on a Debian 12 machine. Quick no-op when all is present.
# With the argument "bench" it also installs what the benchmarks compare against (pandas, curl);
# with "fuzz" the clang toolchain of the fuzz targets; with "windows" the mingw-w64 cross compiler,
# Wine to run what it builds, and NSIS for the installer.
set -euo pipefail

packages=(
  build-essential cmake make pkg-config git
  libgtest-dev libgmock-dev
  libcurl4-openssl-dev libssl-dev openssl libcpp-httplib-dev libcli11-dev
  qt6-base-dev
  # The chart page; its CMake package needs the OpenGL one, which it does not pull in.
  qt6-charts-dev libqt6opengl6-dev
  xvfb xauth
  python3 time
  clang-format
)
case "${1:-}" in
  bench) packages+=(python3-pandas curl) ;;
  fuzz) packages+=(clang libclang-rt-14-dev) ;;
  windows) packages+=(g++-mingw-w64-x86-64-posix wine wine64 nsis) ;;
esac

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
