#!/usr/bin/python3
"""Runs kvtl_write_bench over the writing cases and prints a markdown table.

    write_bench.py [--build-dir build] [--reps 3] [--quick]

Each case is a process of its own; repetitions are interleaved so that load
from elsewhere hits every writer alike; medians are reported.  CPU time is
the measure the ratios use (the machine is shared: wall time is shown too).
"""
import argparse
import statistics
import subprocess
import sys


def run(exe, model, size, writer, fmt):
    out = subprocess.run([exe, model, str(size), writer, fmt], check=True,
                         capture_output=True, text=True).stdout
    return dict(kv.split("=", 1) for kv in out.split())


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--build-dir", default="build")
    ap.add_argument("--reps", type=int, default=3)
    ap.add_argument("--quick", action="store_true", help="small models, one repetition")
    a, _ = ap.parse_known_args()   # the other driver's options pass through
    exe = a.build_dir + "/bench/kvtl_write_bench"
    cases = [("pmedian", 1000), ("transport", 1000)]
    reps = a.reps
    if a.quick:
        cases, reps = [("pmedian", 100), ("transport", 100)], 1
    writers = ["lib", "coin", "glpk"]
    print("| model | format | writer | CPU s | wall s | CPU ns/nonzero | write peak MB | file MB | CPU vs lib |")
    print("|---|---|---|---|---|---|---|---|---|")
    for model, size in cases:
        for fmt in ["mps", "lp"]:
            res = {w: [] for w in writers}
            for _ in range(reps):
                for w in writers:
                    res[w].append(run(exe, model, size, w, fmt))
            med = {}
            for w in writers:
                rows = res[w]
                med[w] = {k: statistics.median(float(r[k]) for r in rows)
                          for k in ["cpu", "wall", "nnz", "bytes", "write_peak_kb"]}
            for w in writers:
                m = med[w]
                print("| %s %d | %s | %s | %.3f | %.3f | %.0f | %.1f | %.1f | %.2fx |" % (
                    model, size, fmt.upper(), w, m["cpu"], m["wall"], m["cpu"] * 1e9 / m["nnz"],
                    m["write_peak_kb"] / 1024, m["bytes"] / 1e6, m["cpu"] / med["lib"]["cpu"]))
            sys.stdout.flush()


if __name__ == "__main__":
    main()
