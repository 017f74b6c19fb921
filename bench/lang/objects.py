class Counter:
    def __init__(self):
        self.total = 0
        self.step = 2

    def add(self, value):
        self.total = self.total + value


def main():
    o = Counter()
    for i in range(1, 5000001):
        o.add(i)
    n = 0
    for i in range(1, 5000001):
        n = n + o.step
    return o.total + n


print("result:", main())
