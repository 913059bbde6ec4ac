local Counter = {}
Counter.__index = Counter
local function new() return setmetatable({ count = 0 }, Counter) end
function Counter:add(v)
  self.count = self.count + v
  return self.count
end
local function run(n)
  local c = new()
  local s = 0
  local i = 0
  while i < n do
    s = s + c:add(i & 3) % 5
    i = i + 1
  end
  return s
end
print(run(tonumber(arg[1]) or 3000000))
