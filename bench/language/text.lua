local function run(n)
  local hits = 0
  for i = 0, n - 1 do
    local s = "item" .. i .. ":" .. i % 10
    local at = s:find(":", 1, true)
    local tail = s:sub(at + 1)
    if tail == "7" then hits = hits + 1 end
    hits = hits + #s
    local up = tail:upper()
    if up < "5" then hits = hits + 1 end
  end
  return hits
end
print(run(tonumber(arg[1]) or 600000))
