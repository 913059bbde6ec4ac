-- The scene of scene.vlq in LÖVE: the background and every sprite are drawn anew each frame.
local count, last = tonumber(os.getenv("SPRITES")), tonumber(os.getenv("FRAMES"))
local x, y, dx, dy = {}, {}, {}, {}
local frame, touching, background, art = 0, 0, nil, nil

function love.load()
  background = love.graphics.newCanvas(800, 600)
  love.graphics.setCanvas(background)
  love.graphics.clear(1, 1, 1)
  for i = 0, 599, 4 do
    love.graphics.setColor((math.floor(i / 3) % 256) / 255, 40 / 255, 160 / 255)
    love.graphics.line(0, i, 799, 599 - i)
  end
  art = love.graphics.newCanvas(32, 32)
  love.graphics.setCanvas(art)
  love.graphics.setColor(1, 0.75, 0)
  love.graphics.circle("fill", 16, 16, 15)
  love.graphics.setColor(0.5, 0, 0)
  love.graphics.setLineWidth(2)
  love.graphics.circle("line", 16, 16, 14)
  love.graphics.setCanvas()
  love.graphics.setColor(1, 1, 1)
  for i = 0, count - 1 do
    x[i], y[i] = 16 + (i * 7919) % 752, 16 + (i * 104729) % 552
    dx[i], dy[i] = i % 7 - 3, i % 5 - 2
  end
end

local function touches(i)
  local left, top = x[i], y[i]
  for k = 0, count - 1 do
    if k ~= i and math.abs(x[k] - left) < 32 and math.abs(y[k] - top) < 32 then return 1 end
  end
  return 0
end

function love.draw()
  love.graphics.draw(background)
  for i = 0, count - 1 do
    x[i], y[i] = x[i] + dx[i], y[i] + dy[i]
    if x[i] < 16 or x[i] > 784 then
      dx[i] = -dx[i]
      x[i] = x[i] + dx[i]
    end
    if y[i] < 16 or y[i] > 584 then
      dy[i] = -dy[i]
      y[i] = y[i] + dy[i]
    end
    touching = touching + touches(i)
  end
  for i = 0, count - 1 do love.graphics.draw(art, x[i] - 16, y[i] - 16) end
  frame = frame + 1
  if frame == last then love.event.quit() end
end

-- The usual loop without its pause of a millisecond.
function love.run()
  love.load()
  return function()
    love.event.pump()
    for name in love.event.poll() do
      if name == "quit" then return 0 end
    end
    love.graphics.origin()
    love.graphics.clear(0, 0, 0)
    love.draw()
    love.graphics.present()
  end
end
