#!/usr/bin/python3
"""Tables of zobase against an independent implementation, python3-dbf.

zobase creates tables (dbf_interop_tool write) that python3-dbf reads, and
reads tables (dbf_interop_tool dump) that python3-dbf wrote; both sides must
find the same values. python3-dbf knows versions 0x03, 0x30, 0x31 and 0xF5,
so the tables zobase creates, always 0x32, are given the byte 0x30 when they
hold only field types that version has.

Null values are left out: python3-dbf 0.96 gives every field a bit in
_NullFlags by its position, where the format hands bits out in field order
to the nullable and variable-length fields only, and it writes no null bits.
Its tables with nullable fields are still read, with their values.

python3-dbf also writes its version 0xF5 tables with a backlink area, which
that version does not have: zobase refuses them as corrupt, since their
header length is not what their descriptors take.

Usage: dbf_interop.py PATH/TO/dbf_interop_tool
"""
import datetime
import decimal
import os
import subprocess
import sys
import tempfile

import dbf

from interop_checks import check, finish

TOOL = sys.argv[1]


def escape(text):
    return text.replace("\\", "\\\\").replace("\t", "\\t").replace("\n", "\\n")


def unescape(text):
    out, i = [], 0
    while i < len(text):
        if text[i] == "\\" and i + 1 < len(text):
            out.append({"t": "\t", "n": "\n"}.get(text[i + 1], text[i + 1]))
            i += 2
        else:
            out.append(text[i])
            i += 1
    return "".join(out)


def encode(letter, value):
    """A value in the tool's text form; "" is the empty date."""
    if value is None:
        return "\\N"
    if letter in "DT":
        return stamp(value)
    if letter == "L":
        return "T" if value else "F"
    if letter == "B":
        return repr(float(value))
    return escape(str(value))


def stamp(moment):
    """YYYYMMDD for a date, YYYYMMDDhhmmss for a datetime, "" for none."""
    if not moment:
        return ""
    text = "%04d%02d%02d" % (moment.year, moment.month, moment.day)
    if isinstance(moment, datetime.datetime):
        text += "%02d%02d%02d" % (moment.hour, moment.minute, moment.second)
    return text


def same_number(a, b):
    return abs(float(a) - float(b)) <= 1e-9 * max(1.0, abs(float(a)), abs(float(b)))


def run_tool(*args, refusal=None):
    result = subprocess.run([TOOL, *args], capture_output=True, text=True)
    if refusal:
        check(result.returncode == 2 and refusal in result.stderr,
              "%s: expected %s, got %r" % (" ".join(args), refusal, result.stderr))
    elif result.returncode != 0:
        raise SystemExit("dbf_interop_tool %s failed: %s" % (" ".join(args), result.stderr))
    return result.stdout


# ---- zobase writes, python3-dbf reads

ZOBASE_FIELDS = [
    ("NAME", "C", 12, 0, ""),
    ("QTY", "N", 8, 2, ""),
    ("RATE", "F", 10, 3, ""),
    ("BORN", "D", 0, 0, ""),
    ("SEEN", "T", 0, 0, ""),
    ("OK", "L", 0, 0, ""),
    ("COUNT", "I", 0, 0, ""),
    ("PRICE", "Y", 0, 0, ""),
    ("RATIO", "B", 0, 0, ""),
    ("NOTES", "M", 0, 0, ""),
]

ZOBASE_RECORDS = [
    ("Anna", 12.5, 1.125, datetime.date(1990, 5, 17), datetime.datetime(2024, 1, 2, 3, 4, 5),
     True, -7, decimal.Decimal("12.3456"), 0.1, "memo body"),
    ("Größe €", -0.25, -1000.5, datetime.date(2000, 2, 29), datetime.datetime(1999, 12, 31, 23, 59, 59),
     False, 2147483647, decimal.Decimal("-1234567.8901"), 1e300, "ümlaut memo\nline 2\t" + "x" * 500),
    ("", 0, 0, "", "", False, -2147483648, decimal.Decimal("0"), -0.5, ""),
]


def python_value_matches(letter, written, read):
    if letter == "C":
        return (read or "").rstrip() == (written or "")
    if letter in "NF":
        return read is not None and same_number(read, written)
    if letter in "DT":
        return read == written if written else read in (None, dbf.Date(), dbf.DateTime())
    if letter == "L":
        # False is written as a space, which python3-dbf reads as unknown.
        return read == written or (written is False and read is None)
    if letter == "Y":
        return decimal.Decimal(read) == written
    if letter == "B":
        return float(read) == written
    return read == written


def zobase_writes_python_reads(folder):
    spec = os.path.join(folder, "zobase.spec")
    table = os.path.join(folder, "zobase.dbf")
    with open(spec, "w", encoding="utf-8") as out:
        out.write("codepage\t1252\nversion\t0x30\n")
        for name, letter, length, decimals, flags in ZOBASE_FIELDS:
            out.write("field\t%s\t%s\t%d\t%d\t%s\n" % (name, letter, length, decimals, flags))
        for record in ZOBASE_RECORDS:
            values = [encode(f[1], v) for f, v in zip(ZOBASE_FIELDS, record)]
            out.write("record\t" + "\t".join(values) + "\n")
    run_tool("write", table, spec)

    read = dbf.Table(table)
    read.open(dbf.READ_ONLY)
    try:
        check(read.codepage.name == "cp1252", "python reads codepage %s" % read.codepage.name)
        check([f.upper() for f in read.field_names] == [f[0] for f in ZOBASE_FIELDS],
              "python reads fields %s" % read.field_names)
        for name, letter, length, decimals, flags in ZOBASE_FIELDS:
            info = read.field_info(name.lower())
            check(chr(info.field_type) == letter, "%s has type %r" % (name, info.field_type))
            if length:
                check(info.length == length, "%s has length %d" % (name, info.length))
        check(len(read) == len(ZOBASE_RECORDS), "python reads %d records" % len(read))
        for number, (record, written) in enumerate(zip(read, ZOBASE_RECORDS)):
            for (name, letter, _, _, flags), value in zip(ZOBASE_FIELDS, written):
                got = record[name.lower()]
                check(python_value_matches(letter, value, got),
                      "record %d %s: wrote %r, python read %r" % (number, name, value, got))
    finally:
        read.close()


# ---- python3-dbf writes, zobase reads

PYTHON_TABLES = [
    # (file, dbf_type, codepage, field specs, letters, records)
    ("vfp.dbf", "vfp", "cp1252",
     "name C(10); qty N(9,3); rate F(12,4); born D; seen T; ok L; count I; price Y; ratio B; notes M",
     "CNFDTLIYBM",
     [("Zoë", 1234.567, -0.0625, datetime.date(2023, 12, 31), datetime.datetime(2020, 2, 29, 12, 0, 1),
       True, 123456, decimal.Decimal("99.9900"), 2.5, "a memo\nover lines " + "y" * 300),
      ("", 0, 0, None, None, False, -5, decimal.Decimal("-0.0001"), -1e-300, ""),
      ("x" * 10, -999.999, 1e6, datetime.date(1, 1, 1), datetime.datetime(9999, 12, 31, 23, 59, 59),
       False, 0, decimal.Decimal("0"), 0.0, "short")]),
    ("nulls.dbf", "vfp", "cp1252", "a C(3); b C(3) null; c N(3,0); d N(3,0) null; e M null",
     "CCNNM",
     [("x", "y", 1, 2, "memo"), ("", "", 0, 0, "")]),
    ("fox.dbf", "fp", "cp850", "name C(8); amount N(10,2); day D; flag L; notes M; ratio F(8,3)",
     "CNDLMF",
     [("Müller", 1.5, datetime.date(1999, 1, 31), True, "Fox memo", 3.25),
      ("Ørsted", -10.25, None, False, "", 0)]),
    ("db3.dbf", "db3", "cp437", "name C(6); amount N(6,0); day D; flag L",
     "CNDL",
     [("Señor", 42, datetime.date(2024, 6, 1), True),
      ("", -5, None, False)]),
]

VERSION_OF_TYPE = {"vfp": 0x30, "fp": 0xF5, "db3": 0x03}


def zobase_value_matches(letter, written, text):
    if letter in "CM":
        return unescape(text).rstrip() == (written or "").rstrip()
    if letter in "NF":
        return same_number(text, written or 0)
    if letter in "DT":
        return text == stamp(written)
    if letter == "L":
        return text == ("T" if written else "F")
    if letter == "I":
        return int(text) == written
    if letter == "Y":
        return decimal.Decimal(text) == written
    if letter == "B":
        return float(text) == written
    return False


def python_writes_zobase_reads(folder):
    for file, dbf_type, codepage, specs, letters, records in PYTHON_TABLES:
        path = os.path.join(folder, file)
        table = dbf.Table(path, specs, dbf_type=dbf_type, codepage=codepage)
        table.open(dbf.READ_WRITE)
        for record in records:
            table.append(record)
        table.close()

        if dbf_type == "fp":
            run_tool("dump", path, refusal="dbf_error_file_corruption")
            continue
        lines = run_tool("dump", path).splitlines()
        fields = [line.split("\t") for line in lines if line.startswith("field\t")]
        rows = [line.split("\t")[1:] for line in lines if line.startswith("record")]
        check(lines[0] == "version\t%d" % VERSION_OF_TYPE[dbf_type], "%s: %s" % (file, lines[0]))
        check(lines[1] == "codepage\t" + {"cp1252": "windows-1252", "cp850": "ibm-850",
                                         "cp437": "ibm-437"}[codepage], "%s: %s" % (file, lines[1]))
        check("".join(f[2] for f in fields) == letters, "%s: field types %s" % (file, fields))
        check(len(rows) == len(records), "%s: zobase reads %d records" % (file, len(rows)))
        for number, (row, written) in enumerate(zip(rows, records)):
            for letter, text, value in zip(letters, row, written):
                check(zobase_value_matches(letter, value, text),
                      "%s record %d: python wrote %r, zobase read %r" % (file, number, value, text))


def main():
    with tempfile.TemporaryDirectory(prefix="zobase_interop_") as folder:
        zobase_writes_python_reads(folder)
        python_writes_zobase_reads(folder)
    return finish()


if __name__ == "__main__":
    sys.exit(main())
