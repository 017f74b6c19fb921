# 1,000,000 evaluations of an expression given as text.
expr = "n + i % 7"
n = 0
for i in range(1, 1000001):
    n = eval(expr)
print("result:", n)
