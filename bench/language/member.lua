local function run(n)
  local s = 0
  for i = 0, n - 1 do
    s = s + math.abs(i - 1000)
    s = math.min(s, 1000000)
  end
  return s
end
print(run(tonumber(arg[1]) or 5000000))
