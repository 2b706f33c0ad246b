#!/usr/bin/python3
"""run_bench.py -- the driver of `make bench`: runs every benchmark case in a
process of its own, takes medians over repetitions, prints the result tables
and (with --readme) writes them into bench/README.md between its markers.

Parts (all by default):
  check   the generated models stated by every variant give one LP optimum
  build   build + load of p-median and transport models: library, floor, peer
  micro   Google Benchmark micro-benchmarks (term lists, names, pools, expressions)
  solve   reference models solved through the library and by clp / cbc
  mip     the MIP search against cbc's command line on all 20 MIPLIB 3 models
          (bench/mip_vs_cbc.py), against its goal
"""
import argparse
import json
import os
import platform
import re
import statistics
import subprocess
import sys
import time

from reap import reap

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
PYTHON = "/usr/bin/python3"   # the interpreter that sees Debian's PuLP

# (model, size, repetitions of the library/floor cases, of the peer)
BUILD_CASES = [
    ("pmedian", 100, 7, 3),
    ("pmedian", 300, 5, 3),
    ("pmedian", 1000, 3, 1),
    ("transport", 500, 5, 1),
    ("transport", 1000, 3, 1),
]
QUICK_CASES = [("pmedian", 100, 3, 1), ("transport", 100, 3, 1)]
LIB_VARIANTS = ["lib", "lib-nonames"]
FLOOR_VARIANTS = ["kvsl-names", "kvsl", "clp"]

# Reference models of the solve comparison: every netlib LP; the MIPLIB 3
# models whose search takes the engine seconds, not minutes (bell3a, bell5,
# vpm2 and pk1 are left out: up to several minutes each on two cores).
MIP_SUBSET = ["egout", "enigma", "flugpl", "lseu", "p0033", "p0201", "p0282", "p0548",
              "rgn", "stein27", "vpm1", "mod008", "khb05250", "gt2", "dcmulti", "misc03"]


class Child:
    """A child process reaped with wait4, giving its own peak RSS."""

    @staticmethod
    def run(cmd, timeout=None):
        out, err, status, usage, wall, capped = reap(cmd, timeout)
        if capped:
            raise TimeoutError(" ".join(cmd))
        returncode = os.waitstatus_to_exitcode(status)
        if returncode != 0:
            raise RuntimeError(f"{' '.join(cmd)} failed ({returncode}): {err.strip()[-500:]}")
        return out, usage.ru_maxrss / 1024.0, wall


def parse_pairs(line):
    return {k: float(v) for k, v in (kv.split("=") for kv in line.split())}


def model_cmd(args, model, size, variant, solve=False):
    if variant == "pulp":
        cmd = [PYTHON, os.path.join(HERE, "pulp_peer.py"), model, str(size)]
    else:
        cmd = [os.path.join(args.build_dir, "bench", "kvtl_model_bench"), model, str(size), variant]
    return cmd + (["--solve"] if solve else [])


def log(msg):
    print(msg, file=sys.stderr, flush=True)


# ---- check -------------------------------------------------------------------

def part_check(args):
    rows = []
    ok = True
    for model, size in [("pmedian", 30), ("transport", 40)]:
        objs = {}
        for variant in LIB_VARIANTS + FLOOR_VARIANTS + ["pulp"]:
            out, _, _ = Child.run(model_cmd(args, model, size, variant, solve=True))
            r = parse_pairs(out)
            objs[variant] = r["obj"]
        ref = objs["kvsl"]
        same = all(abs(v - ref) <= 1e-7 * max(1.0, abs(ref)) for v in objs.values())
        ok = ok and same
        rows.append(f"| {model} {size} | " + " | ".join(f"{objs[v]:.10g}" for v in objs)
                    + f" | {'same' if same else 'DIFFERENT'} |")
    head = ("| model | " + " | ".join(LIB_VARIANTS + FLOOR_VARIANTS + ["pulp"])
            + " | verdict |\n|---|" + "---|" * (len(LIB_VARIANTS + FLOOR_VARIANTS) + 2))
    return ok, head + "\n" + "\n".join(rows)


# ---- build / load --------------------------------------------------------------

def median(xs):
    return statistics.median(xs) if xs else float("nan")


def measure_case(args, model, size, reps, peer_reps):
    """Medians per variant of the phase times (wall and CPU) and peak RSS."""
    variants = LIB_VARIANTS + FLOOR_VARIANTS + ["lib-presized", "idle"]
    runs = {v: [] for v in variants + ["pulp"]}
    # Interleaved repetitions: a burst of load from elsewhere hits every
    # variant alike instead of one variant's whole series.
    for rep in range(reps):
        for v in variants:
            if v == "idle" and rep > 0:
                continue
            out, rss, _ = Child.run(model_cmd(args, model, size, v))
            r = parse_pairs(out)
            r["rss"] = rss
            runs[v].append(r)
    if not args.no_peer:
        for _ in range(peer_reps):
            out, rss, _ = Child.run(model_cmd(args, model, size, "pulp"))
            r = parse_pairs(out)
            r["rss"] = rss
            runs["pulp"].append(r)
    res = {}
    for v, rs in runs.items():
        if not rs:
            continue
        for r in rs:
            r["total"] = r["build"] + r["load"]
            r["total_cpu"] = r["build_cpu"] + r["load_cpu"]
        m = {k: median([r[k] for r in rs]) for k in
             ("build", "load", "total", "build_cpu", "load_cpu", "total_cpu", "rss")}
        m.update(n=len(rs), cols=int(rs[0]["cols"]), rows=int(rs[0]["rows"]),
                 nnz=int(rs[0]["nnz"]))
        res[v] = m
    return res


def part_build(args):
    cases = QUICK_CASES if args.quick else BUILD_CASES
    results = []
    for model, size, reps, peer_reps in cases:
        log(f"build/load: {model} {size}")
        results.append((model, size, measure_case(args, model, size, reps, peer_reps)))
    return results


def fmt_t(x):
    return f"{x:.3f}" if x >= 0.01 else f"{x:.4f}"


def cw(m, key="total"):
    """CPU seconds with the wall seconds in brackets."""
    return f"{fmt_t(m[key + '_cpu'])} ({fmt_t(m[key])})"


# Below this many MiB above the idle process a model's memory is lost in
# the noise of the start-up's own (page granularity, allocator arenas).
MIN_NET_RSS = 8.0


def net_ratio(r, a, b):
    """Ratio of two variants' peak RSS above the idle process's, or None
    when the model takes too little memory to tell."""
    idle = r["idle"]["rss"]
    if r[b]["rss"] - idle < MIN_NET_RSS:
        return None
    return (r[a]["rss"] - idle) / (r[b]["rss"] - idle)


def fmt_ratio(x):
    return "n/a" if x is None else f"{x:.2f}"


def size_label(model, size):
    return f"{size}x{size}" if model == "pmedian" else f"{size}x{2 * size}"


def build_tables(results):
    t = []
    t.append("Seconds are CPU seconds of the process (user + system) with wall seconds in "
             "brackets, medians over the repetitions; ratios are taken on CPU seconds, which "
             "other work on the shared machine disturbs least. RSS: peak resident set of the "
             "process in MiB, median; its ratio is taken net of the idle process's (start-up "
             "only, second table), i.e. on the memory the model itself takes ('n/a' where the "
             f"floor takes less than {MIN_NET_RSS:.0f} MiB above it).\n")
    t.append("Every object named, as users write models (floor: the same arrays and the same "
             "names written by hand into the engine):\n")
    t.append("| model | size | nnz | lib build | lib load | lib total | floor total | "
             "lib/floor | lib RSS | floor RSS | RSS lib/floor | PuLP total | PuLP RSS | "
             "PuLP/lib |")
    t.append("|---|---|---|---|---|---|---|---|---|---|---|---|---|---|")
    for model, size, r in results:
        lib, fl = r["lib"], r["kvsl-names"]
        row = (f"| {model} | {size_label(model, size)} | {fl['nnz']} | {cw(lib, 'build')} | "
               f"{cw(lib, 'load')} | {cw(lib)} | {cw(fl)} | "
               f"{lib['total_cpu'] / fl['total_cpu']:.2f} | {lib['rss']:.0f} | {fl['rss']:.0f} | "
               f"{fmt_ratio(net_ratio(r, 'lib', 'kvsl-names'))} | ")
        if "pulp" in r:
            p = r["pulp"]
            row += f"{cw(p)} | {p['rss']:.0f} | {p['total_cpu'] / lib['total_cpu']:.0f} |"
        else:
            row += "- | - | - |"
        t.append(row)
    t.append("\nNames switched off in the library, none given to the engine by the floor; "
             "and the raw backend (the arrays into ClpSimplex::loadProblem):\n")
    t.append("| model | size | lib build | lib load | lib total | floor total | lib/floor | "
             "clp total | floor/clp | lib RSS | floor RSS | clp RSS | RSS lib/floor | "
             "idle RSS |")
    t.append("|---|---|---|---|---|---|---|---|---|---|---|---|---|---|")
    for model, size, r in results:
        ln, kv, cl = r["lib-nonames"], r["kvsl"], r["clp"]
        t.append(f"| {model} | {size_label(model, size)} | {cw(ln, 'build')} | {cw(ln, 'load')} | "
                 f"{cw(ln)} | {cw(kv)} | {ln['total_cpu'] / kv['total_cpu']:.2f} | {cw(cl)} | "
                 f"{kv['total_cpu'] / cl['total_cpu']:.2f} | {ln['rss']:.0f} | {kv['rss']:.0f} | "
                 f"{cl['rss']:.0f} | {fmt_ratio(net_ratio(r, 'lib-nonames', 'kvsl'))} | {r['idle']['rss']:.0f} |")
    t.append("\nPhases: the floor writing arrays and names / its engine load calls; the "
             "library with its dictionary sized for every name up front; PuLP building / "
             "writing its MPS file:\n")
    t.append("| model | size | floor arrays+names | floor engine load | lib presized build | "
             "lib presized total | PuLP build | PuLP MPS | runs lib/floor/PuLP |")
    t.append("|---|---|---|---|---|---|---|---|---|")
    for model, size, r in results:
        fl, lp = r["kvsl-names"], r["lib-presized"]
        p = r.get("pulp")
        t.append(f"| {model} | {size_label(model, size)} | {cw(fl, 'build')} | {cw(fl, 'load')} | "
                 f"{cw(lp, 'build')} | {cw(lp)} | {cw(p, 'build') if p else '-'} | "
                 f"{cw(p, 'load') if p else '-'} | {r['lib']['n']}/{fl['n']}/{p['n'] if p else 0} |")
    return "\n".join(t)


# ---- micro ---------------------------------------------------------------------

def part_micro(args):
    exe = os.path.join(args.build_dir, "bench", "kvtl_micro_bench")
    cmd = [exe, "--benchmark_format=json", "--benchmark_repetitions=3",
           "--benchmark_report_aggregates_only=true"]
    if args.quick:
        cmd.append("--benchmark_min_time=0.05")
    log("micro-benchmarks")
    out = subprocess.run(cmd, check=True, capture_output=True, text=True).stdout
    data = json.loads(out)
    rows = ["| benchmark | items per second (median of 3) | ns per item | bytes per term |",
            "|---|---|---|---|"]
    for b in data["benchmarks"]:
        if b.get("aggregate_name") != "median":
            continue
        ips = b.get("items_per_second", 0.0)
        bpt = b.get("bytes_per_term")
        rows.append(f"| {b['run_name']} | {ips / 1e6:.1f} M | {1e9 / ips:.1f} | "
                    f"{'' if bpt is None else f'{bpt:.1f}'} |")
    return "\n".join(rows), data


# ---- solve -------------------------------------------------------------------

OBJ_CLP = re.compile(r"Optimal objective\s+(\S+)")
OBJ_CBC = re.compile(r"Objective value:\s+(\S+)")


def solve_models(args):
    data = args.data_dir
    models = []
    for name in sorted(os.listdir(os.path.join(data, "netlib"))):
        if name.endswith(".mps.gz"):
            models.append(("LP", name[:-7], os.path.join(data, "netlib", name)))
    subset = MIP_SUBSET[:4] if args.quick else MIP_SUBSET
    for name in subset:
        models.append(("MIP", name, os.path.join(data, "miplib3", name + ".mps.gz")))
    # The convex QPs (QPS files); clp reads their quadratic section too.
    for name in sorted(os.listdir(os.path.join(data, "maros"))):
        if name.endswith(".QPS.gz"):
            models.append(("QP", name[:-7], os.path.join(data, "maros", name)))
    if args.quick:
        models = (models[:6] + [m for m in models if m[0] == "MIP"]
                  + [m for m in models if m[0] == "QP"][:3])
    return models


def part_solve(args):
    exe = os.path.join(args.build_dir, "bench", "kvtl_solve_bench")
    rows = []
    for kind, name, path in solve_models(args):
        log(f"solve: {name}")
        reps = 1 if args.quick else args.mip_reps if kind == "MIP" else args.solve_reps
        peer = "cbc" if kind == "MIP" else "clp"
        walls = {"lib": [], "engine": [], "peer": []}
        inproc = {"lib": [], "engine": []}
        objs = {}
        for _ in range(reps):
            for who, cmd in (("lib", [exe, path]), ("engine", [exe, "--engine", path]),
                             ("peer", [peer, path, "-solve"])):
                out, _, wall = Child.run(cmd, timeout=900)
                walls[who].append(wall)
                if who == "peer":
                    m = (OBJ_CLP if peer == "clp" else OBJ_CBC).findall(out)
                    objs[who] = float(m[-1]) if m else float("nan")
                else:
                    r = parse_pairs(out)
                    inproc[who].append(r["build"] + r["solve"])
                    objs[who] = r["obj"]
        rows.append({"kind": kind, "name": name, "peer": peer,
                     "lib": median(walls["lib"]), "engine": median(walls["engine"]),
                     "peer_wall": median(walls["peer"]), "lib_in": median(inproc["lib"]),
                     "engine_in": median(inproc["engine"]), "objs": objs})
    return rows


def solve_table(rows):
    t = ["Wall seconds of whole processes (read the gzipped MPS file, state the model, solve), "
         "medians: the library (kvtl_solve_bench), the same arrays loaded straight into the "
         "engine (kvtl_solve_bench --engine), and the command line `clp FILE -solve` or "
         "`cbc FILE -solve`. 'in process' is the time from reading to the end of the solve "
         "inside the process, without start-up.\n",
         "| kind | model | library | engine | peer | lib/engine | lib/engine in process | "
         "lib/peer | objective (lib = engine = peer?) |",
         "|---|---|---|---|---|---|---|---|---|"]
    for r in rows:
        o = r["objs"]
        ref = o["peer"]
        same = all(abs(v - ref) <= 1e-6 * max(1.0, abs(ref)) for v in o.values())
        t.append(f"| {r['kind']} | {r['name']} | {r['lib']:.3f} | {r['engine']:.3f} | "
                 f"{r['peer_wall']:.3f} ({r['peer']}) | {r['lib'] / r['engine']:.2f} | "
                 f"{r['lib_in'] / r['engine_in']:.2f} | {r['lib'] / r['peer_wall']:.2f} | "
                 f"{o['lib']:.10g}{'' if same else f' vs {ref:.10g} (DIFFERS)'} |")
    for kind in ("LP", "MIP", "QP"):
        sel = [r for r in rows if r["kind"] == kind]
        if not sel:
            continue
        lib = sum(r["lib"] for r in sel)
        eng = sum(r["engine"] for r in sel)
        peer = sum(r["peer_wall"] for r in sel)
        t.append(f"\n{kind}, {len(sel)} models: library {lib:.2f} s, engine {eng:.2f} s, "
                 f"{sel[0]['peer']} {peer:.2f} s in total; ratio of sums lib/engine {lib / eng:.3f}, "
                 f"lib/{sel[0]['peer']} {lib / peer:.2f}; geometric means of the per-model ratios "
                 f"{statistics.geometric_mean([r['lib'] / r['engine'] for r in sel]):.3f} and "
                 f"{statistics.geometric_mean([r['lib'] / r['peer_wall'] for r in sel]):.2f}.")
    return "\n".join(t)


# ---- report ----------------------------------------------------------------------

def goals(build, micro_data, solve_rows):
    lines = []
    if build:
        worst_t = max(r["lib"]["total_cpu"] / r["kvsl-names"]["total_cpu"] for _, _, r in build)
        worst_m = max((x for _, _, r in build if (x := net_ratio(r, "lib", "kvsl-names")) is not None),
                      default=None)
        worst_tn = max(r["lib-nonames"]["total_cpu"] / r["kvsl"]["total_cpu"] for _, _, r in build)
        worst_mn = max((x for _, _, r in build if (x := net_ratio(r, "lib-nonames", "kvsl")) is not None),
                       default=None)
        lines.append(f"- build+load within 1.5x of the floor, CPU time: worst {worst_t:.2f}x named, "
                     f"{worst_tn:.2f}x unnamed: {'met' if max(worst_t, worst_tn) <= 1.5 else 'MISSED'}")
        if worst_m is None or worst_mn is None:
            # Small models take too little memory to measure against start-up.
            lines.append("- build+load within 1.5x of the floor, memory: not measurable at these sizes")
        else:
            lines.append(f"- build+load within 1.5x of the floor, memory (peak RSS net of start-up): worst {worst_m:.2f}x named, "
                         f"{worst_mn:.2f}x unnamed: {'met' if max(worst_m, worst_mn) <= 1.5 else 'MISSED'}")
        peers = [r["pulp"]["total_cpu"] / r["lib"]["total_cpu"] for _, _, r in build if "pulp" in r]
        if peers:
            lines.append(f"- at least 10x faster than PuLP: least {min(peers):.1f}x: "
                         f"{'met' if min(peers) >= 10 else 'MISSED'}")
    if micro_data:
        asc = [b for b in micro_data["benchmarks"] if b.get("aggregate_name") == "median"
               and b["run_name"].startswith(("BM_AddAscending/", "BM_ApiAddTermAscending/"))]
        for b in asc:
            ips = b["items_per_second"] / 1e6
            lines.append(f"- 20 M ascending add-terms per second ({b['run_name']}): {ips:.1f} M: "
                         f"{'met' if ips >= 20 else 'MISSED'}")
    if solve_rows:
        for kind in ("LP", "MIP"):
            sel = [r for r in solve_rows if r["kind"] == kind]
            if not sel:
                continue
            for base, label in (("engine", "the engine loaded directly"),
                                ("peer_wall", f"the {sel[0]['peer']} command line")):
                ratio = sum(r["lib"] for r in sel) / sum(r[base] for r in sel)
                lines.append(f"- solve overhead within 5% ({kind}, summed process times against "
                             f"{label}): {(ratio - 1) * 100:+.1f}%: "
                             f"{'met' if ratio <= 1.05 else 'MISSED'}")
    return "\n".join(lines)


def machine():
    cpu = "unknown cpu"
    try:
        with open("/proc/cpuinfo") as f:
            for line in f:
                if line.startswith("model name"):
                    cpu = line.split(":", 1)[1].strip()
                    break
    except OSError:
        pass
    load = os.getloadavg()
    return (f"{cpu}, {os.cpu_count()} cores, {platform.system()} {platform.release()}; "
            f"load average at the end {load[0]:.1f}")


def update_readme(path, text):
    begin, end = "<!-- results:begin -->", "<!-- results:end -->"
    with open(path) as f:
        doc = f.read()
    if begin not in doc or end not in doc:
        raise SystemExit(f"{path}: result markers missing")
    head, rest = doc.split(begin, 1)
    _, tail = rest.split(end, 1)
    with open(path, "w") as f:
        f.write(head + begin + "\n" + text + "\n" + end + tail)


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    ap.add_argument("--build-dir", default=os.path.join(ROOT, "build"))
    ap.add_argument("--data-dir", default=os.path.join(ROOT, "..", "shared", "data"))
    ap.add_argument("--parts", default="check,build,micro,solve,mip")
    ap.add_argument("--mip-cap", type=float, default=300.0,
                    help="wall seconds per process of the MIP comparison")
    ap.add_argument("--quick", action="store_true", help="small sizes, one repetition (smoke run)")
    ap.add_argument("--no-peer", action="store_true", help="leave PuLP out")
    ap.add_argument("--solve-reps", type=int, default=7, help="repetitions per LP model")
    ap.add_argument("--mip-reps", type=int, default=1, help="repetitions per MIP model")
    ap.add_argument("--readme", help="write the results into this README between its markers")
    args = ap.parse_args()
    if not os.path.isdir(args.data_dir) and os.path.isdir("/work/shared/data"):
        args.data_dir = "/work/shared/data"
    parts = args.parts.split(",")
    started = time.time()
    sections = []
    build = micro_data = solve_rows = None
    if "check" in parts:
        log("check: the variants state the same model")
        ok, table = part_check(args)
        sections.append("### Same model in every variant (LP relaxation optimum)\n\n" + table)
        if not ok:
            print("\n\n".join(sections))
            raise SystemExit("the variants do not state the same model")
    if "build" in parts:
        build = part_build(args)
        sections.append("### Build and load\n\n" + build_tables(build))
    if "micro" in parts:
        table, micro_data = part_micro(args)
        sections.append("### Micro-benchmarks\n\n" + table)
    if "solve" in parts:
        solve_rows = part_solve(args)
        sections.append("### Solve overhead (whole process: read the MPS file, build, solve)\n\n"
                        + solve_table(solve_rows))
    mip_summary = None
    if "mip" in parts:
        sys.path.insert(0, HERE)
        import mip_vs_cbc
        models = mip_vs_cbc.ALL_MODELS[:4] if args.quick else mip_vs_cbc.ALL_MODELS
        log("mip: the search against cbc's command line")
        rows = mip_vs_cbc.compare(args.build_dir, args.data_dir, models, args.mip_cap)
        table, mip_summary, _ = mip_vs_cbc.table(rows, args.mip_cap)
        sections.append("### MIP search against cbc's command line (whole process, CPU seconds)\n\n"
                        + table + "\n\n" + mip_summary)
    summary = goals(build, micro_data, solve_rows)
    if mip_summary is not None:
        summary += "\n- MIP search, total no more than cbc's and no model above 2x: " + mip_summary
    stamp = time.strftime("%Y-%m-%d %H:%M", time.localtime())
    text = (f"Run of {stamp} ({'quick' if args.quick else 'full'}, {time.time() - started:.0f} s); "
            f"{machine()}.\n\n### Goals\n\n{summary}\n\n" + "\n\n".join(sections))
    print(text)
    if args.readme and args.quick:
        log("quick run: the README keeps the last full results")
    elif args.readme:
        update_readme(args.readme, text)
        log(f"results written to {args.readme}")


if __name__ == "__main__":
    main()
