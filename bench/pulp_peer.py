#!/usr/bin/python3
"""pulp_peer.py -- the peer of the build/load benchmark: the same models
(same fixed-seed data as bench_models.cpp) built with PuLP's ordinary API and
handed over the way PuLP hands a model to its CBC interface, as an MPS file.

    /usr/bin/python3 pulp_peer.py pmedian|transport SIZE [--solve]

Prints one line of key=value pairs like kvtl_model_bench (wall and CPU
seconds): build = model building in Python, load = writing the MPS file
(rename=1, as PuLP's CBC interface does).  With --solve the LP relaxation is solved by PuLP's CBC interface and
its objective printed, to check that the models agree.
"""
import math
import os
import sys
import tempfile
import time

import pulp

MASK = (1 << 64) - 1


class Rng:
    """splitmix64, as in bench_models.h."""

    def __init__(self, seed):
        self.state = seed

    def next(self):
        self.state = (self.state + 0x9E3779B97F4A7C15) & MASK
        z = self.state
        z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & MASK
        z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & MASK
        return z ^ (z >> 31)

    def below(self, n):
        return self.next() % n


def pmedian_data(n):
    r = Rng(12345)
    sites = [(r.below(10000), r.below(10000)) for _ in range(n)]
    customers = []
    for _ in range(n):
        x = r.below(10000)
        y = r.below(10000)
        customers.append((x, y, 1 + r.below(10)))
    cost = [[w * math.isqrt((sx - cx) ** 2 + (sy - cy) ** 2) for (cx, cy, w) in customers]
            for (sx, sy) in sites]
    return max(1, n // 10), cost


def transport_data(s, d):
    r = Rng(67890)
    supply = [4 * (1 + r.below(100)) for _ in range(s)]
    demand = [1 + r.below(50) for _ in range(d)]
    cost = [[1 + r.below(1000) for _ in range(d)] for _ in range(s)]
    return supply, demand, cost


def build_pmedian(n, p, cost, relax):
    prob = pulp.LpProblem("pmedian", pulp.LpMinimize)
    cat = "Continuous" if relax else "Binary"
    y = [pulp.LpVariable(f"y_{i}", 0, 1, cat) for i in range(n)]
    x = [[pulp.LpVariable(f"x_{i}_{j}", 0, 1) for j in range(n)] for i in range(n)]
    prob += pulp.lpSum(cost[i][j] * x[i][j] for i in range(n) for j in range(n))
    for j in range(n):
        prob += pulp.lpSum(x[i][j] for i in range(n)) == 1, f"assign_{j}"
    for i in range(n):
        for j in range(n):
            prob += x[i][j] - y[i] <= 0, f"link_{i}_{j}"
    prob += pulp.lpSum(y) == p, "card"
    return prob


def build_transport(s, d, supply, demand, cost):
    prob = pulp.LpProblem("transport", pulp.LpMinimize)
    x = [[pulp.LpVariable(f"x_{i}_{j}", 0) for j in range(d)] for i in range(s)]
    prob += pulp.lpSum(cost[i][j] * x[i][j] for i in range(s) for j in range(d))
    for i in range(s):
        prob += pulp.lpSum(x[i]) <= supply[i], f"supply_{i}"
    for j in range(d):
        prob += pulp.lpSum(x[i][j] for i in range(s)) >= demand[j], f"demand_{j}"
    return prob


def main():
    if len(sys.argv) < 3 or sys.argv[1] not in ("pmedian", "transport"):
        sys.exit("usage: pulp_peer.py pmedian|transport SIZE [--solve]")
    model, size = sys.argv[1], int(sys.argv[2])
    solve = "--solve" in sys.argv[3:]
    # The data is made before any clock starts, as in kvtl_model_bench.
    if model == "pmedian":
        p, cost = pmedian_data(size)
    else:
        supply, demand, cost = transport_data(size, 2 * size)
    c0 = time.process_time()
    t0 = time.perf_counter()
    if model == "pmedian":
        # The check solves the LP relaxation, as the other variants do.
        prob = build_pmedian(size, p, cost, relax=solve)
    else:
        prob = build_transport(size, 2 * size, supply, demand, cost)
    t1 = time.perf_counter()
    c1 = time.process_time()
    fd, path = tempfile.mkstemp(suffix=".mps")
    os.close(fd)
    try:
        prob.writeMPS(path, rename=1)
        t2 = time.perf_counter()
        c2 = time.process_time()
    finally:
        os.unlink(path)
    nnz = sum(len(c) for c in prob.constraints.values())
    line = (f"build={t1 - t0:.6f} load={t2 - t1:.6f} build_cpu={c1 - c0:.6f} load_cpu={c2 - c1:.6f} "
            f"cols={len(prob.variables())} rows={len(prob.constraints)} nnz={nnz}")
    if solve:
        # Debian ships no bundled binary: its CBC interface runs the cbc on the PATH.
        prob.solve(pulp.COIN_CMD(msg=False))
        line += f" obj={pulp.value(prob.objective):.10g}"
    print(line)


if __name__ == "__main__":
    main()
