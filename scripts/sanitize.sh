#!/usr/bin/env bash
# Builds the generator, the library and every test with AddressSanitizer and
# UndefinedBehaviorSanitizer (no recovery: the first report fails the run) in
# build-asan/, and runs the whole suite there. The generator runs
# instrumented at build time, so undefined behaviour in it stops the build.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
jobs=$(nproc)
san="-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer"
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_C_FLAGS="$san" -DCMAKE_CXX_FLAGS="$san" \
      -DCMAKE_EXE_LINKER_FLAGS="$san" -DCMAKE_SHARED_LINKER_FLAGS="$san"
cmake --build build-asan -j"$jobs"
(cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
   ctest --output-on-failure -j"$jobs")
