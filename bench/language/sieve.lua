local function sieve(n)
  local gone = {}
  for i = 0, n - 1 do gone[i] = 0 end
  local count = 0
  for i = 2, n - 1 do
    if gone[i] == 0 then
      count = count + 1
      for k = i + i, n - 1, i do gone[k] = 1 end
    end
  end
  return count
end
print(sieve(tonumber(arg[1]) or 4000000))
