#!/usr/bin/python3
"""SQL pass-through beside Python's sqlite3: the same 1,000,000 rows of four
columns (integer, varchar, double, date) read from one SQLite file.

  bench/sql.py build/zosh [--rows N]

zobase fetches them through the SQLite ODBC driver into a cursor and walks
it with SCAN summing a column; Python iterates the sqlite3 cursor summing
the same column. Both print one "result:" line that must agree. The figure
is the processor time (user and system) of each process, less the time of
the same process doing everything but the fetch (connect, start-up). The
ratio is zobase's time over Python's: the goal is at most 1.5.
"""
import argparse
import os
import sqlite3
import sys
import tempfile

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from tables import run  # noqa: E402  processor and elapsed time of one process

PYTHON = "/usr/bin/python3" if os.path.exists("/usr/bin/python3") else sys.executable

ZOBASE_FETCH = """h = sqlstringconnect("Driver=SQLite3;StepAPI=1;Database=rows.db")
IF {fetch}
  = sqlexec(h, "select id, name, amount, day from rows")
  nSum = 0
  SCAN
    nSum = nSum + amount
  ENDSCAN
  ? "result:", RECCOUNT(), nSum
ENDIF
"""

PYTHON_FETCH = """import sqlite3
c = sqlite3.connect("rows.db")
if {fetch}:
    total = 0.0
    n = 0
    for row in c.execute("select id, name, amount, day from rows"):
        total += row[2]
        n += 1
    print("result:", n, "%.2f" % total)
"""


def make_rows(folder, count):
    db = sqlite3.connect(os.path.join(folder, "rows.db"))
    db.execute("create table rows (id integer, name varchar(20), amount double precision, day date)")
    db.executemany("insert into rows values (?, ?, ?, ?)",
                   ((i, "name %d" % (i % 1000), i * 0.25, "2024-%02d-%02d" % (i % 12 + 1, i % 28 + 1))
                    for i in range(1, count + 1)))
    db.commit()
    db.close()


def measure(folder, name, text, command):
    """Processor and elapsed seconds of the fetch alone, and its result."""
    for fetch, flag in (("base", ".F."), ("fetch", ".T.")):
        program = os.path.join(folder, f"{name}_{fetch}")
        with open(program, "w") as f:
            f.write(text.format(fetch=flag if command[0] != PYTHON else flag == ".T."))
    base_cpu, base_elapsed, _ = run(command + [f"{name}_base"], folder)
    cpu, elapsed, result = run(command + [f"{name}_fetch"], folder)
    return max(cpu - base_cpu, 1e-6), elapsed - base_elapsed, result


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("zosh")
    parser.add_argument("--rows", type=int, default=1000000)
    args = parser.parse_args()
    zosh = os.path.abspath(args.zosh)
    with tempfile.TemporaryDirectory() as folder:
        make_rows(folder, args.rows)
        z_cpu, z_elapsed, z_result = measure(folder, "fetch.prg", ZOBASE_FETCH, [zosh])
        p_cpu, p_elapsed, p_result = measure(folder, "fetch.py", PYTHON_FETCH, [PYTHON])
    agree = z_result is not None and p_result is not None and z_result[0] == p_result[0] and \
        abs(float(z_result[1]) - float(p_result[1])) < 0.01
    print(f"{args.rows} rows of 4 columns from SQLite into a cursor, walked")
    print(f"  zobase (ODBC):    {z_cpu:7.3f} s processor, {z_elapsed:7.3f} s elapsed")
    print(f"  python sqlite3:   {p_cpu:7.3f} s processor, {p_elapsed:7.3f} s elapsed")
    print(f"  ratio zobase/python: {z_cpu / p_cpu:.2f} (goal <= 1.5)" + ("" if agree else "  RESULTS DISAGREE"))
    return 0 if agree else 1


if __name__ == "__main__":
    sys.exit(main())
