def add2(a, b):
    return a + b

def main():
    n_sum = 0
    for i in range(1, 5000001):
        n_sum = add2(n_sum, i)
    return n_sum

print("result:", main())
