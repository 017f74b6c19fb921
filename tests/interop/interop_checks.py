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
