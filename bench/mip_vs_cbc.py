#!/usr/bin/python3
"""mip_vs_cbc.py -- the MIP search through the library against cbc's command
line: every MIPLIB 3 model of the shared data, both in the same run.

  bench/mip_vs_cbc.py [--build-dir build] [--data DIR] [--cap SECONDS]
                      [--models a,b,...] [--orders N] [--threads N]

Each model is solved by two whole processes, one after the other:
`kvtl_solve_bench FILE` (read, stated through the public interface, searched
with `mdlminim_prob(prob, "g")`) and `cbc FILE -solve -quit`. Both are capped
at --cap seconds of wall time (a capped run counts as the cap). The table
gives CPU seconds of each process (the machine is shared, so CPU time is the
fairer clock; wall seconds beside them), the objectives checked against the
published optimum (relative 1e-5), the node counts and the ratio
library/cbc. The goal: summed library time no more than cbc's, and no model
above 2x.

A search's time on a model can change many times over with nothing but
the order of its rows (enigma: cbc takes 15 nodes in its file's order and
thousands in most others).  With --orders N each model is also solved by
both in N row orders of its file (the ROWS section shuffled with seeds 1
to N, written as plain MPS files), and a second table gives the medians.

With --threads N both search on N threads (`kvtl_solve_bench --threads N`,
`cbc FILE -threads N -solve -quit`) and the tables compare wall seconds,
which threads are there to shorten; the goal above is for one thread.
"""
import argparse
import csv
import gzip
import os
import random
import re
import statistics
import sys
import tempfile

from reap import reap

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
ALL_MODELS = ["p0033", "p0201", "p0282", "p0548", "lseu", "egout", "flugpl", "bell5", "bell3a",
              "stein27", "mod008", "gt2", "vpm1", "vpm2", "rgn", "enigma", "misc03", "khb05250",
              "dcmulti", "pk1"]


def run(cmd, cap):
    """Run cmd; (stdout, cpu seconds, wall seconds, capped)."""
    out, err, status, usage, wall, capped = reap(cmd, cap)
    out += err
    if not capped and os.waitstatus_to_exitcode(status) != 0:
        raise RuntimeError(f"{' '.join(cmd)} failed: {out.strip()[-500:]}")
    return out, usage.ru_utime + usage.ru_stime, wall, capped


def read_optima(data):
    with open(os.path.join(data, "miplib3", "optima.tsv")) as f:
        return {r["name"]: float(r["optimum"]) for r in csv.DictReader(f, delimiter="\t")}


# Threads of both searches (--threads); above one the tables compare wall
# seconds.
THREADS = 1


def clock():
    """The clock of the tables."""
    return "wall s" if THREADS > 1 else "CPU s"


def threads_note():
    """The threads of a threaded run, for its summary."""
    return f", {THREADS} threads, wall seconds" if THREADS > 1 else ""


def library(build_dir, path, cap):
    threads = ["--threads", str(THREADS)] if THREADS > 1 else []
    out, cpu, wall, capped = run([os.path.join(build_dir, "bench", "kvtl_solve_bench")] + threads +
                                 [path], cap)
    if THREADS > 1:
        cpu = wall
    if capped:
        return {"cpu": cpu, "wall": wall, "capped": True, "obj": None, "nodes": None}
    last = [l for l in out.splitlines() if l.startswith("build=")][-1]
    pairs = dict(kv.split("=") for kv in last.split())
    status = int(pairs["status"])
    return {"cpu": cpu, "wall": wall, "capped": False, "nodes": int(pairs["nodes"]),
            "obj": float(pairs["obj"]) if status == 6 else None, "status": status}


def cbc(path, cap):
    threads = ["-threads", str(THREADS)] if THREADS > 1 else []
    out, cpu, wall, capped = run(["cbc", path] + threads + ["-solve", "-quit"], cap)
    if THREADS > 1:
        cpu = wall
    if capped:
        return {"cpu": cpu, "wall": wall, "capped": True, "obj": None, "nodes": None}
    obj = re.search(r"^Objective value:\s+(\S+)", out, re.M)
    nodes = re.search(r"^Enumerated nodes:\s+(\d+)", out, re.M)
    optimal = re.search(r"^Result - Optimal solution found", out, re.M) is not None
    return {"cpu": cpu, "wall": wall, "capped": False,
            "obj": float(obj.group(1)) if obj and optimal else None,
            "nodes": int(nodes.group(1)) if nodes else None}


def verdict(r, optimum):
    if r["capped"]:
        return "capped"
    if r["obj"] is None:
        return "not optimal"
    ok = abs(r["obj"] - optimum) <= 1e-5 * max(1.0, abs(optimum))
    return "ok" if ok else f"WRONG {r['obj']:.10g}"


def compare(build_dir, data, models, cap):
    """Rows of (model, library result, cbc result, optimum)."""
    optima = read_optima(data)
    rows = []
    for name in models:
        path = os.path.join(data, "miplib3", name + ".mps.gz")
        if not os.path.exists(path):
            raise FileNotFoundError(path)
        lib = library(build_dir, path, cap)
        peer = cbc(path, cap)
        rows.append((name, lib, peer, optima[name]))
        print(f"  {name}: library {lib['cpu']:.2f}s, cbc {peer['cpu']:.2f}s", file=sys.stderr,
              flush=True)
    return rows


def row_orders(path, n, directory):
    """Write n copies of the MPS file at path, each with the rows of its ROWS
    section (all but the objective) in another order; their paths."""
    with gzip.open(path, "rt") as f:
        lines = f.read().splitlines()
    start = lines.index("ROWS")
    end = next(i for i, line in enumerate(lines) if i > start and not line.startswith(" "))
    rows = lines[start + 1:end]
    objective = [r for r in rows if r.split()[0] == "N"]
    others = [r for r in rows if r.split()[0] != "N"]
    name = os.path.basename(path).split(".")[0]
    paths = []
    for seed in range(1, n + 1):
        order = others[:]
        random.Random(seed).shuffle(order)
        out = os.path.join(directory, f"{name}_{seed}.mps")
        with open(out, "w") as f:
            f.write("\n".join(lines[:start + 1] + objective + order + lines[end:]) + "\n")
        paths.append(out)
    return paths


def compare_orders(build_dir, data, models, cap, n):
    """Rows of (model, library CPU seconds, cbc CPU seconds, wrong answers),
    one pair of seconds per row order."""
    optima = read_optima(data)
    rows = []
    with tempfile.TemporaryDirectory() as tmp:
        for name in models:
            lib_s, cbc_s, wrong = [], [], 0
            for path in row_orders(os.path.join(data, "miplib3", name + ".mps.gz"), n, tmp):
                lib = library(build_dir, path, cap)
                peer = cbc(path, cap)
                lib_s.append(cap if lib["capped"] else lib["cpu"])
                cbc_s.append(cap if peer["capped"] else peer["cpu"])
                wrong += verdict(lib, optima[name]) != "ok"
            rows.append((name, lib_s, cbc_s, wrong))
            print(f"  {name} in {n} row orders: library median {statistics.median(lib_s):.2f}s, "
                  f"cbc {statistics.median(cbc_s):.2f}s", file=sys.stderr, flush=True)
    return rows


def orders_table(rows, n):
    """The row-order comparison as a markdown table."""
    lines = [f"| model | library median {clock()} (min-max) | cbc median {clock()} (min-max) | "
             f"ratio of medians | orders above 2x | library not optimal |",
             "|---|---|---|---|---|---|"]
    for name, lib_s, cbc_s, wrong in rows:
        lm, cm = statistics.median(lib_s), statistics.median(cbc_s)
        above = sum(1 for a, b in zip(lib_s, cbc_s) if a > 2.0 * max(b, 1e-3))
        lines.append(f"| {name} | {lm:.2f} ({min(lib_s):.2f}-{max(lib_s):.2f}) | "
                     f"{cm:.2f} ({min(cbc_s):.2f}-{max(cbc_s):.2f}) | {lm / max(cm, 1e-3):.2f}x | "
                     f"{above} of {n} | {wrong} |")
    return "\n".join(lines)


def table(rows, cap):
    """The comparison as a markdown table with the verdict against the goal."""
    lines = [f"| model | library {clock()} (wall) | cbc {clock()} (wall) | ratio | library nodes | "
             "cbc nodes | library objective | cbc objective |",
             "|---|---|---|---|---|---|---|---|"]
    lib_total = cbc_total = 0.0
    worst = 0.0
    wrong = 0
    for name, lib, peer, opt in rows:
        lc = cap if lib["capped"] else lib["cpu"]
        pc = cap if peer["capped"] else peer["cpu"]
        lib_total += lc
        cbc_total += pc
        ratio = lc / max(pc, 1e-3)
        worst = max(worst, ratio)
        lv, pv = verdict(lib, opt), verdict(peer, opt)
        wrong += lv != "ok"
        nodes = lambda r: "-" if r["nodes"] is None else str(r["nodes"])
        lines.append(f"| {name} | {lc:.2f} ({lib['wall']:.2f}) | {pc:.2f} ({peer['wall']:.2f}) | "
                     f"{ratio:.2f}x | {nodes(lib)} | {nodes(peer)} | {lv} | {pv} |")
    total_ratio = lib_total / max(cbc_total, 1e-3)
    lines.append(f"| **total** | {lib_total:.2f} | {cbc_total:.2f} | {total_ratio:.2f}x | | | | |")
    met = total_ratio <= 1.0 and worst <= 2.0 and wrong == 0
    summary = (f"Total {lib_total:.2f} s against cbc's {cbc_total:.2f} s ({total_ratio:.2f}x), "
               f"worst model {worst:.2f}x, {wrong} model(s) not at the published optimum "
               f"(cap {cap:.0f} s{threads_note()}): goal {'MET' if met else 'MISSED'}")
    return "\n".join(lines), summary, met


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--build-dir", default=os.path.join(ROOT, "build"))
    ap.add_argument("--data", default=os.path.join(ROOT, "..", "shared", "data"))
    ap.add_argument("--cap", type=float, default=300.0, help="wall seconds per process")
    ap.add_argument("--models", default=",".join(ALL_MODELS))
    ap.add_argument("--orders", type=int, default=0,
                    help="also solve each model in this many row orders")
    ap.add_argument("--threads", type=int, default=1,
                    help="threads of both searches (wall seconds compared above 1)")
    args = ap.parse_args()
    global THREADS
    THREADS = args.threads
    data = args.data
    if not os.path.isdir(data) and os.path.isdir("/work/shared/data"):
        data = "/work/shared/data"
    rows = compare(args.build_dir, data, args.models.split(","), args.cap)
    text, summary, _ = table(rows, args.cap)
    print(text)
    print()
    print(summary)
    if args.orders > 0:
        rows = compare_orders(args.build_dir, data, args.models.split(","), args.cap, args.orders)
        print()
        print(f"Each model in {args.orders} row orders of its file ({clock()}):")
        print()
        print(orders_table(rows, args.orders))


if __name__ == "__main__":
    main()
