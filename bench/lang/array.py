a = [None] * 1000000
for i in range(1000000):
    a[i] = (i + 1) * 2
n_sum = 0
for i in range(1000000):
    n_sum = n_sum + a[i]
print("result:", n_sum)
