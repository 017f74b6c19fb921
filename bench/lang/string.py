# Build a string of 1,000,000 pieces, then 1,000,000 times upper(c[p:p+16]).
# The pieces are joined once, as Python code does it: `c = c + "ab" + x`
# copies c every round in CPython.
def main():
    parts = []
    for i in range(1, 1000001):
        parts.append("ab" + chr(97 + i % 26))
    c = "".join(parts)
    n = 0
    n_len = len(c) - 16
    for i in range(1, 1000001):
        p = (i * 7) % n_len
        n = n + len(c[p:p + 16].upper())
    print("result:", len(c), n)


main()
