import sys

n = int(sys.argv[1]) if len(sys.argv) > 1 else 1000000


def run(n):
    a = []
    s = 0
    for turn in range(10):
        for i in range(n):
            if i < len(a):
                a[i] = i + turn
            else:
                a.append(i + turn)
        s = 0
        for i in range(n):
            s = s + (a[i] & 255)
    return s


print(run(n))
