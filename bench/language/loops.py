import sys

n = int(sys.argv[1]) if len(sys.argv) > 1 else 10000000


def run(n):
    s = 0
    for i in range(n):
        s = s + i % 7
        if s > 100000:
            s = s - 100000
    return s


print(run(n))
