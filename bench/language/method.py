import sys

n = int(sys.argv[1]) if len(sys.argv) > 1 else 3000000


class Counter:
    def __init__(self):
        self.count = 0

    def add(self, v):
        self.count = self.count + v
        return self.count


def run(n):
    c = Counter()
    s = 0
    i = 0
    while i < n:
        s = s + c.add(i & 3) % 5
        i = i + 1
    return s


print(run(n))
