import sys

n = int(sys.argv[1]) if len(sys.argv) > 1 else 5000000


def run(n):
    s = 0
    for i in range(n):
        s = s + abs(i - 1000)
        s = min(s, 1000000)
    return s


print(run(n))
