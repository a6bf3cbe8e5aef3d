#!/usr/bin/env bash
# Builds and runs the whole test suite three times: x86-64, then i386 (-m32, run
# under qemu-i386 when the host cannot execute 32-bit code), then x86-64 with
# the sanitizers; last, the thread test with ThreadSanitizer. The i386 and
# ThreadSanitizer builds use the kernel generator of the x86-64 build.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
jobs=$(nproc)

cmake -S . -B build -DCMAKE_BUILD_TYPE=Release
cmake --build build -j"$jobs"
(cd build && ctest --output-on-failure -j"$jobs")

cmake -S . -B build-i386 -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/i386.cmake" \
      -DTQF_HOST_GENERATOR="$PWD/build/gen/tqfgen_gen"
cmake --build build-i386 -j"$jobs"
(cd build-i386 && ctest --output-on-failure -j"$jobs")

# The same suite with AddressSanitizer and UndefinedBehaviorSanitizer
# (x86-64, no recovery), the generator included.
./scripts/sanitize.sh

# Every family from many threads at once, with ThreadSanitizer (x86-64; the
# library and that test only: ./scripts/tsan.sh --all runs the whole suite).
./scripts/tsan.sh
