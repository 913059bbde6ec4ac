local function run(n)
  local s = 0
  for i = 0, n - 1 do
    s = s + i % 7
    if s > 100000 then s = s - 100000 end
  end
  return s
end
print(run(tonumber(arg[1]) or 10000000))
