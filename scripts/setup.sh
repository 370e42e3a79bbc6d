#!/usr/bin/env bash
# Installs what the build needs on Debian 12 (only what is missing), then
# configures and builds everything into ./build.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(cmake ninja-build g++ pkg-config qt6-base-dev qt6-serialport-dev qt6-multimedia-dev libgl-dev
    qt6-httpserver-dev qt6-websockets-dev liblo-dev libmosquitto-dev mosquitto mosquitto-clients chromium
    ser2net desktop-file-utils appstream dpkg-dev file clang-format python3)
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    sudo_cmd=()
    [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
    "${sudo_cmd[@]}" apt-get update -q
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

# ZUN_CMAKE_ARGS adds configure options (CI turns warnings into errors).
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo ${ZUN_CMAKE_ARGS:-}
cmake --build build -j"$(nproc)"
