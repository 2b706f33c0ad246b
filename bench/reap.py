"""reap.py -- run a benchmark's child process and reap it with wait4, so
that its CPU time and peak RSS are its own."""
import os
import subprocess
import tempfile
import time


def reap(cmd, cap=None):
    """Run cmd to its end or until cap wall seconds (then kill it).

    Returns (stdout, stderr, exit status, rusage, wall seconds, capped).
    The outputs go to temporary files, not pipes: a peer's log can be long
    (clp prints a line per pass on some QPs, cbc a line per thousand nodes)
    and a full pipe would stop the child while the driver waits for it."""
    start = time.perf_counter()
    with tempfile.TemporaryFile() as out_f, tempfile.TemporaryFile() as err_f:
        proc = subprocess.Popen(cmd, stdin=subprocess.DEVNULL, stdout=out_f, stderr=err_f)
        capped = False
        while True:
            pid, status, usage = os.wait4(proc.pid, os.WNOHANG)
            if pid != 0:
                break
            if cap is not None and time.perf_counter() - start > cap:
                proc.kill()
                _, status, usage = os.wait4(proc.pid, 0)
                capped = True
                break
            time.sleep(0.002)
        wall = time.perf_counter() - start
        out_f.seek(0)
        err_f.seek(0)
        out = out_f.read().decode(errors="replace")
        err = err_f.read().decode(errors="replace")
    return out, err, status, usage, wall, capped
