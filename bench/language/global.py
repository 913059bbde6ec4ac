import sys

n = int(sys.argv[1]) if len(sys.argv) > 1 else 10000000
result = 0
i = 0
while i < n:
    result = result + (i & 15)
    i = i + 1
print(result)
