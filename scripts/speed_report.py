"""Benchmark results (Google Benchmark JSON, cases named <family>_<precision>_<n>/<side>)
into docs/speed.md and a gnuplot script for docs/speed.png. Each time is the minimum
CPU time per call over the repetitions; the peer is FFTW ("fftw")."""
import json
import os
import platform
import statistics
import subprocess
import sys
from collections import defaultdict

FAMILIES = {  # in the order of the report
    "cfwd": "Complex DFT, forward",
    "cinv": "Complex DFT, inverse",
    "rfwd": "Real DFT, forward (CCS)",
    "rinv": "Real DFT, inverse (CCS, input copied)",
    "hartley": "Hartley",
    "dct4": "DCT-IV",
}

# What a family's table needs said beyond the common header.
NOTES = {
    "rfwd": "FFTW: r2c. The Pack and Perm kernels run on the same input as columns of their own.",
    "rinv": "FFTW: c2r, which may overwrite its input (and does at many lengths), so every timed call "
            "of either side first copies the spectrum (N+2 or N+1 values) into the buffer it reads: both "
            "times include that copy, and the column copy times it alone. The Pack and Perm kernels "
            "(copying their N values) are columns of their own.",
    "hartley": "FFTW: r2r of kind FFTW_DHT, which keeps its input: no copy.",
}


# Columns of further sides in a family's table, in this order (others after them).
SIDE_ORDER = ["pack", "perm", "copy"]


def family_order(family):
    return list(FAMILIES).index(family) if family in FAMILIES else len(FAMILIES)


def machine():
    try:
        for line in open("/proc/cpuinfo"):
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return platform.processor() or "unknown"


def load(paths):
    best = defaultdict(dict)  # (family, precision, n) -> side -> ns
    for path in paths:
        for b in json.load(open(path))["benchmarks"]:
            if b.get("run_type") != "iteration" or "/" not in b["name"]:
                continue
            case, side = b["name"].split("/", 1)
            family, precision, n = case.rsplit("_", 2)
            ns = b["cpu_time"] * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[b["time_unit"]]
            key = (family, precision, int(n))
            best[key][side] = min(ns, best[key].get(side, ns))
    return best


def main():
    out_dir, paths = sys.argv[1], sys.argv[2:]
    best = load(paths)
    rows = sorted((k for k, v in best.items() if "ours" in v and "fftw" in v),
                  key=lambda k: (family_order(k[0]), k[0], k[1], k[2]))
    families = list(dict.fromkeys(k[0] for k in rows))
    lines = ["# Speed against FFTW", "",
             f"Machine: {machine()}, {os.cpu_count()} cores; made by `scripts/speed_report.sh` "
             "(CPU time per call, the fastest of the repetitions, taken while the machine may have "
             "been busy with other work; FFTW's DFTs and DHT with FFTW_PATIENT plans, its DCT-IV (REDFT11) "
             "with FFTW_MEASURE, new-array execute on the same buffers; ours with flag 8). A ratio "
             "below 1 is faster than FFTW.", "", "![ours and FFTW per length](speed.png)", "",
             "| family | precision | lengths | median ratio | best | worst | faster than FFTW |",
             "|---|---|---|---|---|---|---|"]
    groups = defaultdict(list)  # in the order of rows
    for k in rows:
        groups[(k[0], k[1])].append(best[k]["ours"] / best[k]["fftw"])
    for (family, precision), r in groups.items():
        lines.append(f"| {FAMILIES.get(family, family)} | {precision} | {len(r)} | {statistics.median(r):.2f} | "
                     f"{min(r):.2f} | {max(r):.2f} | {sum(x < 1 for x in r)} of {len(r)} |")
    for family in families:
        keys = sorted((k for k in rows if k[0] == family), key=lambda k: (k[2], k[1]))
        extra = sorted({side for k in keys for side in best[k]} - {"ours", "fftw"},
                       key=lambda side: (SIDE_ORDER.index(side) if side in SIDE_ORDER else len(SIDE_ORDER), side))
        lines += ["", f"## {FAMILIES.get(family, family)}", ""]
        if family in NOTES:
            lines += [NOTES[family], ""]
        lines += ["| length | precision | ours ns | FFTW ns | ratio |" + "".join(f" {x} ns |" for x in extra),
                  "|---|---|---|---|---|" + "---|" * len(extra)]
        for k in keys:
            o, f = best[k]["ours"], best[k]["fftw"]
            cells = "".join(f" {best[k][x]:.1f} |" if x in best[k] else " - |" for x in extra)
            lines.append(f"| {k[2]} | {k[1]} | {o:.1f} | {f:.1f} | {o / f:.2f} |" + cells)
    open(os.path.join(out_dir, "speed.md"), "w").write("\n".join(lines) + "\n")

    # The summary table also goes into the README, between its markers.
    readme = os.path.join(os.path.dirname(os.path.abspath(out_dir)), "README.md")
    summary = [l for l in lines if l.startswith("|")][: 2 + len(groups)]
    text = open(readme).read()
    begin, end = "<!-- speed-summary -->", "<!-- /speed-summary -->"
    if begin in text and end in text:
        head, rest = text.split(begin, 1)
        tail = rest.split(end, 1)[1]
        note = f"Fastest CPU time per call on {machine()} (`docs/speed.md` has every length):"
        text = head + begin + "\n" + note + "\n\n" + "\n".join(summary) + "\n" + end + tail
        open(readme, "w").write(text)

    # One data file per family and precision: n, ours, fftw.
    data_dir = os.path.dirname(os.path.abspath(paths[0]))
    plots = []
    for family in families:
        series = []
        for precision in dict.fromkeys(k[1] for k in rows if k[0] == family):
            path = os.path.join(data_dir, f"speed_{family}_{precision}.dat")
            with open(path, "w") as f:
                for k in sorted((k for k in rows if k[0] == family and k[1] == precision), key=lambda k: k[2]):
                    f.write(f"{k[2]} {best[k]['ours']} {best[k]['fftw']}\n")
            series.append(f"'{path}' using 1:2 with linespoints title 'ours {precision}', "
                          f"'{path}' using 1:3 with linespoints dashtype 2 title 'FFTW {precision}'")
        log_x = "set logscale x 2" if family == "dct4" else "unset logscale x"
        plots.append(f"{log_x}\nset title '{FAMILIES.get(family, family)}'\nplot " + ", ".join(series))
    png = os.path.join(os.path.abspath(out_dir), "speed.png")
    script = [f"set terminal pngcairo size 1200,{420 * ((len(plots) + 1) // 2)} font ',9'",
              f"set output '{png}'", f"set multiplot layout {(len(plots) + 1) // 2},2",
              "set logscale y", "set xlabel 'length'", "set ylabel 'ns per call'", "set key left top",
              "set grid"] + plots + ["unset multiplot"]
    open(os.path.join(data_dir, "speed.gp"), "w").write("\n".join(script) + "\n")


if __name__ == "__main__":
    main()
