#!/usr/bin/env bash
# Builds the Debian package into build/package/zunoria_<version>_<arch>.deb.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j"$(nproc)" --target zunoria zunoria-sim
(cd build && cpack -G DEB)
ls build/package/*.deb
