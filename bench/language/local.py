import sys

n = int(sys.argv[1]) if len(sys.argv) > 1 else 10000000


def run(n):
    s = 0
    i = 0
    while i < n:
        s = s + (i & 15)
        i = i + 1
    return s


print(run(n))
