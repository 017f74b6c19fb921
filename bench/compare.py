#!/usr/bin/env python3
"""Runs each language benchmark side by side with the same program in its peers.

For every bench/lang/<name>.prg the runner times `zosh <name>.prg` and, when
they exist, `<name>.py` under Debian's python3 and `<name>.lua` under lua5.4,
in the same run, and prints each whole-process time and zobase's ratio to each
peer. Every program prints one line starting with "result:"; the runner
checks that the peers agree with zobase on it (numbers compared as numbers).

  bench/compare.py build/zosh [--only NAME,...] [--repeat N] [--timeout SECONDS]

A benchmark named *_startup* is run 20 times and its mean is shown. The exit
status is 1 when a result disagrees or a program fails, else 0; times never
fail the run, since the machines are shared.
"""
import argparse
import os
import shutil
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
LANG_DIR = os.path.join(HERE, "lang")
PYTHON = "/usr/bin/python3" if os.path.exists("/usr/bin/python3") else sys.executable
LUA = shutil.which("lua5.4")


def run_once(argv, cwd, limit):
    start = time.perf_counter()
    done = subprocess.run(argv, cwd=cwd, capture_output=True, text=True, timeout=limit)
    elapsed = time.perf_counter() - start
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(argv)} ended with {done.returncode}: {done.stderr.strip()[:400]}")
    return elapsed, result_line(done.stdout)


def result_line(output):
    for line in reversed(output.splitlines()):
        line = line.strip()
        if line.startswith("result:"):
            return line[len("result:"):].split()
    return None


def same_result(a, b):
    if a is None or b is None or len(a) != len(b):
        return False
    for x, y in zip(a, b):
        try:
            if abs(float(x) - float(y)) > 1e-9 * max(1.0, abs(float(x))):
                return False
        except ValueError:
            if x != y:
                return False
    return True


def timed(argv, cwd, repeat, limit):
    times, result = [], None
    for _ in range(repeat):
        elapsed, result = run_once(argv, cwd, limit)
        times.append(elapsed)
    return (sum(times) / len(times) if repeat >= 10 else min(times)), result


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("zosh")
    parser.add_argument("--only", default="")
    parser.add_argument("--repeat", type=int, default=1)
    parser.add_argument("--timeout", type=float, default=300, help="seconds per program")
    args = parser.parse_args()
    zosh = os.path.abspath(args.zosh)
    wanted = {n for n in args.only.split(",") if n}
    names = sorted(f[:-4] for f in os.listdir(LANG_DIR) if f.endswith(".prg"))
    failed = False
    print(f"{'benchmark':<22}{'zobase s':>10}{'python s':>10}{'lua s':>10}{'zo/py':>8}{'zo/lua':>8}  result")
    for name in names:
        if wanted and name not in wanted:
            continue
        repeat = 20 if "startup" in name else args.repeat
        try:
            zo_time, zo_result = timed([zosh, name + ".prg"], LANG_DIR, repeat, args.timeout)
            peers = {}
            if os.path.exists(os.path.join(LANG_DIR, name + ".py")):
                peers["py"] = timed([PYTHON, name + ".py"], LANG_DIR, repeat, args.timeout)
            if LUA and os.path.exists(os.path.join(LANG_DIR, name + ".lua")):
                peers["lua"] = timed([LUA, name + ".lua"], LANG_DIR, repeat, args.timeout)
        except (RuntimeError, subprocess.TimeoutExpired) as failure:
            print(f"{name:<22}FAILED: {failure}")
            failed = True
            continue
        agree = all(same_result(zo_result, r) for _, r in peers.values())
        failed = failed or not agree
        cells = [f"{zo_time:10.3f}"]
        for peer in ("py", "lua"):
            cells.append(f"{peers[peer][0]:10.3f}" if peer in peers else f"{'-':>10}")
        for peer in ("py", "lua"):
            cells.append(f"{zo_time / peers[peer][0]:8.2f}" if peer in peers else f"{'-':>8}")
        shown = " ".join(zo_result or ["(none)"])
        print(f"{name:<22}{''.join(cells)}  {shown}{'' if agree else '  DISAGREE'}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
