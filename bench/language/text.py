import sys

n = int(sys.argv[1]) if len(sys.argv) > 1 else 600000


def run(n):
    hits = 0
    for i in range(n):
        s = "item" + str(i) + ":" + str(i % 10)
        at = s.find(":")
        tail = s[at + 1:]
        if tail == "7":
            hits = hits + 1
        hits = hits + len(s)
        up = tail.upper()
        if up < "5":
            hits = hits + 1
    return hits


print(run(n))
