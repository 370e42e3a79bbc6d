#!/usr/bin/env bash
# Builds the whole test suite a second time with AddressSanitizer and
# UndefinedBehaviorSanitizer into ./build-asan and runs it. Any finding ends
# the run with a failure. Expects what scripts/setup.sh installs.
set -euo pipefail
cd "$(dirname "$0")/.."

launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZUN_SANITIZE=ON "${launcher[@]}"
cmake --build build-asan -j"$(nproc)"

export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=detect_leaks=1:halt_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir build-asan --output-on-failure
