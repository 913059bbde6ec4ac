local function run(n)
  local a = {}
  local s = 0
  for round = 0, 9 do
    for i = 0, n - 1 do a[i] = i + round end
    s = 0
    for i = 0, n - 1 do s = s + (a[i] & 255) end
  end
  return s
end
print(run(tonumber(arg[1]) or 1000000))
