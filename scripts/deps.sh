#!/usr/bin/env bash
# Installs the Debian 12 packages the build, tests and benchmark need, if missing.
set -euo pipefail
need=()
for pkg in cmake g++ g++-multilib qemu-user googletest libgtest-dev libbenchmark-dev \
           libfftw3-dev binutils make pkg-config; do
  dpkg -s "$pkg" >/dev/null 2>&1 || need+=("$pkg")
done
[ ${#need[@]} -eq 0 ] && exit 0
SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO=sudo
$SUDO apt-get update
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends "${need[@]}"
