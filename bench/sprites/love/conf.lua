function love.conf(t)
  t.window.width, t.window.height, t.window.vsync = 800, 600, 0
  t.modules.audio, t.modules.sound, t.modules.physics, t.modules.joystick = false, false, false, false
end
