n = tonumber(arg[1]) or 10000000
result = 0
i = 0
while i < n do
  result = result + (i & 15)
  i = i + 1
end
print(result)
