n_sum = 0
for i in range(1, 20000001):
    n_sum = n_sum + i
print("result:", n_sum)
