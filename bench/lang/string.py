c = ""
for i in range(1, 1000001):
    c = c + "ab" + chr(97 + i % 26)
n = 0
n_len = len(c) - 16
for i in range(1, 1000001):
    p = (i * 7) % n_len
    n = n + len(c[p:p + 16].upper())
print("result:", len(c), n)
