#!/usr/bin/python3
"""Tables made by programs of the language against python3-dbf, both ways.

A program creates a table with CREATE TABLE and fills it with APPEND BLANK
and REPLACE; python3-dbf must read every value back. python3-dbf creates a
table; a program opens it with USE and prints, for every field, whether it
holds what python3-dbf wrote, and the text of its names and numbers.

python3-dbf knows no version 0x32, which CREATE TABLE always makes: the
version byte is given as 0x30 before it reads, as the fields allow.

Usage: language_interop.py PATH/TO/zosh
"""
import datetime
import decimal
import os
import subprocess
import sys
import tempfile

import dbf

from interop_checks import check, finish, open_created_table

ZOSH = os.path.abspath(sys.argv[1])


def literal(value):
    """The value as the language writes it."""
    if isinstance(value, bool):
        return ".T." if value else ".F."
    if isinstance(value, datetime.datetime):
        return "{^%04d-%02d-%02d %02d:%02d:%02d}" % (value.year, value.month, value.day,
                                                    value.hour, value.minute, value.second)
    if isinstance(value, datetime.date):
        return "{^%04d-%02d-%02d}" % (value.year, value.month, value.day)
    if isinstance(value, decimal.Decimal):
        return ("-$" if value < 0 else "$") + str(abs(value))
    if isinstance(value, str):
        return '"' + value + '"'
    return repr(value)


def run_zosh(folder, program):
    path = os.path.join(folder, "program.prg")
    with open(path, "w", encoding="utf-8") as out:
        out.write(program)
    environment = dict(os.environ, LC_ALL="C.UTF-8")
    # The program is UTF-8 text; the table keeps its own code page.
    done = subprocess.run([ZOSH, "--codepage", "65001", path], cwd=folder, capture_output=True, text=True, env=environment)
    if done.returncode != 0:
        raise SystemExit("zosh failed (%d): %s%s" % (done.returncode, done.stdout, done.stderr))
    return done.stdout.splitlines()


# ---- the language writes, python3-dbf reads

FIELDS = "name C(12), qty N(8,2), rate F(10,3), born D, seen T, ok L, count I, price Y, ratio B(3), notes M"
NAMES = ["name", "qty", "rate", "born", "seen", "ok", "count", "price", "ratio", "notes"]
RECORDS = [
    ("Anna", 12.5, 1.125, datetime.date(1990, 5, 17), datetime.datetime(2024, 1, 2, 3, 4, 5),
     True, -7, decimal.Decimal("12.3456"), 0.125, "memo body"),
    ("Größe €", -0.25, -1000.5, datetime.date(2000, 2, 29), datetime.datetime(1999, 12, 31, 23, 59, 59),
     False, 2147483647, decimal.Decimal("-1234567.8901"), 12345.678, "ümlaut memo " + "x" * 300),
]


def same(read, written):
    if isinstance(written, str):
        return (read or "").rstrip() == written
    if isinstance(written, bool):
        # A false logical is a space, which python3-dbf reads as unknown.
        return read == written or (written is False and read is None)
    if isinstance(written, float):
        return read is not None and abs(float(read) - written) <= 1e-9 * max(1.0, abs(written))
    if isinstance(written, decimal.Decimal):
        return decimal.Decimal(read) == written
    return read == written


def filling(table):
    """The program lines that create `table` and write RECORDS into it."""
    lines = ["CREATE TABLE %s CODEPAGE = 1252 (%s)" % (table, FIELDS)]
    for record in RECORDS:
        lines.append("APPEND BLANK")
        for name, value in zip(NAMES, record):
            lines.append("REPLACE %s WITH %s" % (name, literal(value)))
    return lines


def language_writes(folder):
    lines = filling("written")
    lines.append('? "records:", reccount()')
    output = run_zosh(folder, "\n".join(lines) + "\n")
    check(output[-1:] == ["records: %d" % len(RECORDS)], "the program wrote %r" % output)
    read = open_created_table(os.path.join(folder, "written.dbf"))
    try:
        check(read.codepage.name == "cp1252", "codepage %s" % read.codepage.name)
        check(len(read) == len(RECORDS), "python3-dbf reads %d records" % len(read))
        for number, (record, written) in enumerate(zip(read, RECORDS)):
            for name, value in zip(NAMES, written):
                check(same(record[name], value),
                      "record %d %s: the program wrote %r, python3-dbf read %r" % (number, name, value, record[name]))
    finally:
        read.close()


def language_copies(folder):
    """COPY TO with FIELDS and FOR: the chosen columns in their order, memo bodies included."""
    lines = filling("source")
    lines.append("COPY TO copied FIELDS notes, count, name FOR qty < 0")
    run_zosh(folder, "\n".join(lines) + "\n")
    read = open_created_table(os.path.join(folder, "copied.dbf"))
    try:
        check([name.lower() for name in read.field_names] == ["notes", "count", "name"],
              "copied fields %r" % read.field_names)
        check(len(read) == 1, "python3-dbf reads %d copied records" % len(read))
        written = RECORDS[1]
        for name in ("notes", "count", "name"):
            value = written[NAMES.index(name)]
            check(same(read[0][name], value), "copied %s: %r, read %r" % (name, value, read[0][name]))
    finally:
        read.close()


# ---- python3-dbf writes, the language reads

PYTHON_FIELDS = "name C(10); qty N(9,3); born D; seen T; ok L; count I; price Y; ratio B; notes M"
PYTHON_RECORDS = [
    ("Zoë", 1234.567, datetime.date(2023, 12, 31), datetime.datetime(2020, 2, 29, 12, 0, 1),
     True, 123456, decimal.Decimal("99.9900"), 2.5, "a memo over " + "y" * 300),
    ("x" * 10, -999.999, datetime.date(1901, 1, 1), datetime.datetime(2099, 12, 31, 23, 59, 59),
     False, -5, decimal.Decimal("-0.0001"), -0.25, "short"),
]


def language_reads(folder):
    path = os.path.join(folder, "python.dbf")
    table = dbf.Table(path, PYTHON_FIELDS, dbf_type="vfp", codepage="cp1252")
    table.open(dbf.READ_WRITE)
    for record in PYTHON_RECORDS:
        table.append(record)
    table.close()
    names = [spec.split()[0] for spec in PYTHON_FIELDS.split(";")]
    lines = ["USE python", '? "records:", reccount()']
    for number, record in enumerate(PYTHON_RECORDS, 1):
        lines.append("GO %d" % number)
        tests = []
        for name, value in zip(names, record):
            if isinstance(value, str):
                tests.append("ALLTRIM(%s) == %s" % (name, literal(value)))
            else:
                tests.append("%s = %s" % (name, literal(value)))
        lines.append("? " + ", ".join(tests))
        lines.append("? ALLTRIM(name), count")
    output = run_zosh(folder, "\n".join(lines) + "\n")
    expected = ["records: %d" % len(PYTHON_RECORDS)]
    for record in PYTHON_RECORDS:
        expected.append(" ".join(["true"] * len(names)))
        expected.append("%s %d" % (record[0], record[5]))
    check(output == expected, "the program read %r, expected %r" % (output, expected))


def main():
    with tempfile.TemporaryDirectory(prefix="zobase_language_interop_") as folder:
        language_writes(folder)
        language_copies(folder)
        language_reads(folder)
    return finish()


if __name__ == "__main__":
    sys.exit(main())
