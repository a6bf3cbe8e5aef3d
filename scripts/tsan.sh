#!/usr/bin/env bash
# Builds the library and the tests with ThreadSanitizer in build-tsan/ and
# runs the thread test there (test_hardening_threads: every family from many
# threads at once); with --all, the whole suite. The kernel generator is the
# x86-64 build's (it runs one thread, so there is nothing in it for the
# sanitizer to find); it is built first when missing.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
jobs=$(nproc)
if [ ! -x build/gen/tqfgen_gen ]; then
  cmake -S . -B build -DCMAKE_BUILD_TYPE=Release
  cmake --build build -j"$jobs" --target tqfgen_gen
fi
san="-fsanitize=thread -fno-omit-frame-pointer"
cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_C_FLAGS="$san" -DCMAKE_CXX_FLAGS="$san" \
      -DCMAKE_EXE_LINKER_FLAGS="$san" -DCMAKE_SHARED_LINKER_FLAGS="$san" \
      -DTQF_HOST_GENERATOR="$PWD/build/gen/tqfgen_gen" -DTQF_BUILD_EXAMPLES=OFF
# Any report fails the run.
export TSAN_OPTIONS="halt_on_error=1 ${TSAN_OPTIONS:-}"
if [ "${1:-}" = "--all" ]; then
  cmake --build build-tsan -j"$jobs"
  (cd build-tsan && ctest --output-on-failure -j"$jobs")
else
  cmake --build build-tsan -j"$jobs" --target test_hardening_threads
  ./build-tsan/tests/test_hardening_threads
fi
