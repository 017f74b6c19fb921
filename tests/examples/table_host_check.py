#!/usr/bin/python3
"""The example host of the table interface: it must print what
table_host.out holds, and the table it leaves must read in python3-dbf with
the values the host wrote and changed.

Usage: table_host_check.py PATH/TO/table_host PATH/TO/table_host.out
"""
import datetime
import decimal
import difflib
import os
import subprocess
import sys
import tempfile


sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "interop"))
from interop_checks import check, finish, open_created_table  # noqa: E402

HOST = os.path.abspath(sys.argv[1])
EXPECTED = sys.argv[2]

# id, name, price, qty, added, active, notes: as the host leaves them, the
# gasket's quantity one less.
PARTS = [
    (1, "washer", "0.05", 5000, datetime.date(2024, 1, 15), True, ""),
    (2, "bolt M8", "0.425", 1200, datetime.date(2023, 11, 2), True, "zinc plated"),
    (3, "hinge", "3.99", 40, datetime.date(2024, 3, 1), False, "discontinued, sell the rest"),
    (4, "bolt M6", "0.31", 2500, datetime.date(2023, 11, 2), True, ""),
    (5, "gasket", "1250", 2, datetime.date(2022, 6, 30), True, "for the press; order ahead"),
    (6, "anchor", "12.5", 75, datetime.date(2024, 2, 29), True, ""),
]


def host_output(folder):
    done = subprocess.run([HOST, folder], capture_output=True, text=True)
    check(done.returncode == 0, "the host ended with %d: %s" % (done.returncode, done.stderr))
    with open(EXPECTED, encoding="utf-8") as expected:
        wanted = expected.read()
    if done.stdout != wanted:
        diff = difflib.unified_diff(wanted.splitlines(), done.stdout.splitlines(), "expected", "host", lineterm="")
        check(False, "the host's output differs:\n" + "\n".join(diff))


def python_reads(folder):
    read = open_created_table(os.path.join(folder, "parts.dbf"))
    try:
        check(len(read) == len(PARTS), "python3-dbf reads %d records" % len(read))
        for record, part in zip(read, PARTS):
            number, name, price, qty, added, active, notes = part
            # A false logical is a space, which python3-dbf reads as unknown.
            got = (record["id"], record["name"].rstrip(), record["price"], record["qty"], record["added"],
                   bool(record["active"]), record["notes"].rstrip())
            check(got[0] == number and got[1] == name and decimal.Decimal(got[2]) == decimal.Decimal(price)
                  and int(got[3]) == qty and got[4] == added and got[5] == active and got[6] == notes,
                  "record %d: the host wrote %r, python3-dbf read %r" % (number, part, got))
    finally:
        read.close()


with tempfile.TemporaryDirectory() as folder:
    host_output(folder)
    python_reads(folder)
sys.exit(finish())
