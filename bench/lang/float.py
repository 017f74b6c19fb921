x = 1.0
y = 0.0
for i in range(1, 5000001):
    x = x * 1.0000001 + 0.5
    y = y + x / i
print("result:", round(y))
