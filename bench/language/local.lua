local function run(n)
  local s = 0
  local i = 0
  while i < n do
    s = s + (i & 15)
    i = i + 1
  end
  return s
end
print(run(tonumber(arg[1]) or 10000000))
