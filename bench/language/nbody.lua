local sqrt = math.sqrt
local circle = 3.141592653589793
local mass = 4 * circle * circle
local days = 365.24
local function body(x, y, z, vx, vy, vz, m)
  return { x = x, y = y, z = z, vx = vx, vy = vy, vz = vz, m = m }
end
local bodies = {
  [0] = body(0.0, 0.0, 0.0, 0.0, 0.0, 0.0, mass),
  body(4.84143144246472090, -1.16032004402742839, -0.103622044471123109, 0.00166007664274403694 * days, 0.00769901118419740425 * days, -0.0000690460016972063023 * days, 0.000954791938424326609 * mass),
  body(8.34336671824457987, 4.12479856412430479, -0.403523417114321381, -0.00276742510726411 * days, 0.00499852801234917238 * days, 0.0000230417297573763929 * days, 0.000285885980666130812 * mass),
  body(12.8943695621391310, -15.1111514016986312, -0.223307578892655734, 0.00296460137564761618 * days, 0.00237847173959480950 * days, -0.0000296589568540237556 * days, 0.0000436624404335156298 * mass),
  body(15.3796971148509165, -25.9193146099879641, 0.179258772950371181, 0.00268067772490389322 * days, 0.00162824170038242295 * days, -0.0000951592254519715870 * days, 0.0000515138902046611451 * mass),
}

local function offset_momentum()
  local px, py, pz = 0.0, 0.0, 0.0
  for i = 0, 4 do
    px = px + bodies[i].vx * bodies[i].m
    py = py + bodies[i].vy * bodies[i].m
    pz = pz + bodies[i].vz * bodies[i].m
  end
  local sun = bodies[0]
  sun.vx = -(px / mass)
  sun.vy = -(py / mass)
  sun.vz = -(pz / mass)
end

local function advance(n, dt)
  for step = 1, n do
    for i = 0, 4 do
      local a = bodies[i]
      for j = i + 1, 4 do
        local b = bodies[j]
        local dx = a.x - b.x
        local dy = a.y - b.y
        local dz = a.z - b.z
        local d = dx * dx + dy * dy + dz * dz
        local mag = dt / (d * sqrt(d))
        local mb = b.m * mag
        local ma = a.m * mag
        a.vx = a.vx - dx * mb
        a.vy = a.vy - dy * mb
        a.vz = a.vz - dz * mb
        b.vx = b.vx + dx * ma
        b.vy = b.vy + dy * ma
        b.vz = b.vz + dz * ma
      end
    end
    for i = 0, 4 do
      local c = bodies[i]
      c.x = c.x + dt * c.vx
      c.y = c.y + dt * c.vy
      c.z = c.z + dt * c.vz
    end
  end
end

local function energy()
  local e = 0.0
  for i = 0, 4 do
    local a = bodies[i]
    e = e + 0.5 * a.m * (a.vx * a.vx + a.vy * a.vy + a.vz * a.vz)
    for j = i + 1, 4 do
      local b = bodies[j]
      local dx = a.x - b.x
      local dy = a.y - b.y
      local dz = a.z - b.z
      e = e - a.m * b.m / sqrt(dx * dx + dy * dy + dz * dz)
    end
  end
  return e
end

offset_momentum()
advance(tonumber(arg[1]) or 150000, 0.01)
print(math.floor(energy() * -1000000 + 0.5))
