#!/bin/sh
# Builds and runs scripts/real_programs_check.cpp against the generator's
# sources (no CMake target: a host-side check of the descriptions).
# Extra compiler flags may be given in EXTRA, e.g. EXTRA=-fsanitize=address,undefined.
set -e
root=$(cd "$(dirname "$0")/.." && pwd)
out=${TMPDIR:-/tmp}/real_programs_check
${CXX:-g++} -std=c++20 -O1 -g $EXTRA -Wall -Wextra -I"$root/gen" -I"$root/cdft" -o "$out" \
  "$root/scripts/real_programs_check.cpp" "$root/gen/graph.cpp" "$root/gen/algebra.cpp" \
  "$root/cdft/tree.cpp" "$root/cdft/prime_blocks.cpp" "$root/cdft/real_lane.cpp" "$root/cdft/pair_pow2.cpp"
"$out"
