# 1,000,000 look-ups in a 1,000-element list.
a = [i * 3 for i in range(1, 1001)]
n = 0
for i in range(1, 1000001):
    n += a.index((i % 1000 + 1) * 3) + 1
print("result:", n)
