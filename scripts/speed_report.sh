#!/usr/bin/env bash
# Runs the benchmarks that compare the library with FFTW (complex DFT, forward
# and inverse real DFT, Hartley, DCT-IV) and writes docs/speed.md (the
# machine, a summary and every length's ns per call and ratio) and
# docs/speed.png (ours and FFTW per length, one panel per family). Installs
# gnuplot (and python3) when missing: only this script needs them.
#   BUILD_DIR   default build-bench; an existing build is reconfigured with
#               the benchmarks on
#   FILTER      a benchmark filter, for a quick look
#   MIN_TIME    seconds per benchmark, default 0.05
#   REPS        repetitions, default 5: the tables take the fastest, the one
#               least disturbed by other load
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
need=()
for pkg in gnuplot-nox python3; do dpkg -s "$pkg" >/dev/null 2>&1 || need+=("$pkg"); done
if [ ${#need[@]} -gt 0 ]; then
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO=sudo
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends "${need[@]}"
fi
jobs=$(nproc)
dir="${BUILD_DIR:-build-bench}"
if [ -f "$dir/CMakeCache.txt" ]; then
  cmake -S . -B "$dir" -DTQF_BUILD_BENCH=ON
else
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Release -DTQF_BUILD_BENCH=ON \
        -DTQF_BUILD_TESTS=OFF -DTQF_BUILD_EXAMPLES=OFF
fi
cmake --build "$dir" -j"$jobs" --target bench_cdft bench_rdft bench_rdft_inverse bench_hartley bench_dct4
results=()
for bench in cdft rdft rdft_inverse hartley dct4; do
  echo "running bench_$bench"
  "./$dir/bench/bench_$bench" --benchmark_min_time="${MIN_TIME:-0.05}" \
      --benchmark_repetitions="${REPS:-5}" --benchmark_enable_random_interleaving=true \
      ${FILTER:+--benchmark_filter="$FILTER"} \
      --benchmark_out="$dir/$bench.json" --benchmark_out_format=json > "$dir/$bench.txt"
  results+=("$dir/$bench.json")
done
/usr/bin/env python3 scripts/speed_report.py docs "${results[@]}"
gnuplot "$dir/speed.gp"
echo "wrote docs/speed.md and docs/speed.png"
