"""The checks of the interoperability scripts: each check counts, each failed
one is kept with what it was about, and finish() reports them."""

FAILURES = []
CHECKS = [0]


def check(condition, what):
    CHECKS[0] += 1
    if not condition:
        FAILURES.append(what)


def finish():
    """Prints the failures and the tally; the exit status for the script."""
    for failure in FAILURES:
        print("FAIL:", failure)
    print("%d checks, %d mismatches" % (CHECKS[0], len(FAILURES)))
    return 1 if FAILURES else 0


def open_created_table(path):
    """A table zobase created, opened read-only in python3-dbf. python3-dbf
    knows no version 0x32, which zobase always creates: the version byte is
    given as 0x30 first, as the fields allow."""
    import dbf
    with open(path, "r+b") as table:
        table.write(b"\x30")
    read = dbf.Table(path)
    read.open(dbf.READ_ONLY)
    return read
