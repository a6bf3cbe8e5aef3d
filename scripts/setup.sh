#!/usr/bin/env bash
# Installs what a fresh Debian 12 machine lacks, builds the library (x86-64)
# and runs the demo program.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release
cmake --build build -j"$(nproc)"
./build/examples/tqfgen_demo
