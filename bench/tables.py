#!/usr/bin/python3
"""The table benchmarks: zobase programs beside the same work in Python's sqlite3.

  bench/tables.py build/zosh [--keep DIR]

Three steps run in order in one scratch folder, each as its own process:
append (1,000,000 records of C(30), N(12,2), D, N(10) into a new table, no
index; sqlite3 inserts them in one transaction), scan (a natural-order pass
summing the N(12,2) field where a date and an amount condition hold) and
goto (1,000,000 moves to records picked at random, reading one field each).
Each program prints one "result:" line, and both sides must agree on it.

The figure of each step is the processor time of its process (user and
system), which a busy machine disturbs far less than the elapsed time; the
elapsed time is shown beside it. The ratio is sqlite3's time over zobase's:
above 1 zobase is faster. The exit status is 1 when a result disagrees or a
program fails.
"""
import argparse
import os
import resource
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
PROGRAMS = os.path.join(HERE, "tables")
PYTHON = "/usr/bin/python3" if os.path.exists("/usr/bin/python3") else sys.executable
STEPS = ["append", "scan", "goto", "indexed", "build", "seek", "walk"]
# The step whose table a step reads; --only runs it first, unmeasured.
NEEDS = {"scan": "append", "goto": "append", "seek": "indexed", "walk": "indexed"}
# The table a step creates, dropped before the step runs again.
CREATES = {"append": "bench", "indexed": "ibench", "build": "bbench"}


def drop_created(step, folder):
    table = CREATES.get(step)
    if table is None:
        return
    for suffix in (".dbf", ".cdx", ".fpt"):
        path = os.path.join(folder, table + suffix)
        if os.path.exists(path):
            os.remove(path)
    db = sqlite3.connect(os.path.join(folder, "bench.sqlite"))
    db.execute(f"DROP TABLE IF EXISTS {table}")
    db.commit()
    db.close()


def run(argv, cwd):
    """Processor seconds, elapsed seconds and the result words of one process."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.perf_counter()
    done = subprocess.run(argv, cwd=cwd, capture_output=True, text=True)
    elapsed = time.perf_counter() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(argv)} ended with {done.returncode}: {(done.stdout + done.stderr)[-400:]}")
    cpu = (after.ru_utime - before.ru_utime) + (after.ru_stime - before.ru_stime)
    words = None
    for line in done.stdout.splitlines():
        if line.strip().startswith("result:"):
            words = line.split()[1:]
    return cpu, elapsed, words


def agree(a, b):
    if a is None or b is None or len(a) != len(b):
        return False
    for x, y in zip(a, b):
        try:
            if abs(float(x) - float(y)) > 1e-6 * max(1.0, abs(float(x))):
                return False
        except ValueError:
            if x != y:
                return False
    return True


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("zosh")
    parser.add_argument("--keep", help="run in this folder and leave the files there")
    parser.add_argument("--only", action="append", choices=STEPS,
                        help="measure only this step (may be repeated); the steps it reads from run first, unmeasured")
    parser.add_argument("--repeat", type=int, default=1, help="measure each step this many times")
    args = parser.parse_args()
    zosh = os.path.abspath(args.zosh)
    folder = args.keep or tempfile.mkdtemp(prefix="zobase_bench_tables_")
    os.makedirs(folder, exist_ok=True)
    failed = False
    print(f"{'step':<8}{'zobase cpu s':>14}{'(elapsed)':>11}{'sqlite3 cpu s':>15}{'(elapsed)':>11}{'ratio':>8}  result")
    measured = [step for step in STEPS if not args.only or step in args.only]
    try:
        for needed in sorted({NEEDS[step] for step in measured if step in NEEDS} - set(measured)):
            run([zosh, os.path.join(PROGRAMS, needed + ".prg")], folder)
            run([PYTHON, os.path.join(PROGRAMS, needed + ".py")], folder)
        for step in [step for _ in range(max(1, args.repeat)) for step in measured]:
            drop_created(step, folder)
            zo_cpu, zo_wall, zo_result = run([zosh, os.path.join(PROGRAMS, step + ".prg")], folder)
            py_cpu, py_wall, py_result = run([PYTHON, os.path.join(PROGRAMS, step + ".py")], folder)
            same = agree(zo_result, py_result)
            failed |= not same
            shown = " ".join(zo_result or ["?"]) + ("" if same else f"  (sqlite3: {' '.join(py_result or ['?'])})")
            print(f"{step:<8}{zo_cpu:>14.3f}{zo_wall:>11.3f}{py_cpu:>15.3f}{py_wall:>11.3f}{py_cpu / zo_cpu:>8.2f}  {shown}")
    except (RuntimeError, OSError) as error:
        print(f"failed: {error}")
        failed = True
    finally:
        if not args.keep:
            shutil.rmtree(folder, ignore_errors=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
