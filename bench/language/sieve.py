import sys

n = int(sys.argv[1]) if len(sys.argv) > 1 else 4000000


def sieve(n):
    gone = [0] * n
    count = 0
    for i in range(2, n):
        if gone[i] == 0:
            count = count + 1
            for k in range(i + i, n, i):
                gone[k] = 1
    return count


print(sieve(n))
