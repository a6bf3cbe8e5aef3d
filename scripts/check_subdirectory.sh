#!/usr/bin/env bash
# Builds tests/consumer/subdirectory, a project that adds this tree with
# add_subdirectory() and links tqfgen::tqfgen, in build-subdirectory/, and runs
# its consumer program. The test consumer_subdirectory only configures it
# (the configure-time checks: library alone, generated sources in tqfgen's own
# binary folder); this also compiles every kernel again, so it stays out of
# ctest.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
cmake -DSOURCE_DIR="$PWD" -DWORK_DIR="$PWD/build-subdirectory" -DBUILD=ON \
      -P tests/consumer/subdirectory_consumer.cmake
