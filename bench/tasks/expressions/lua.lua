local sqrt, abs, sin, cos, atan, floor = math.sqrt, math.abs, math.sin, math.cos, math.atan, math.floor
local r = 800
local c
for k = 1, r do
  c = 0
  for i = 1, 1000 do
    local x = sqrt(abs(sin(i) * (i + 1) - cos(i) / (2 + i)))
    local y = floor((i * 3 + (i - 1) * (i + 2)) / 7) - atan(x)
    c = c + (x + y) * (x - y) / (abs(x) + abs(y) + 1)
  end
end
print(string.format("CHECK %.0f", math.floor(c)))
print("REPEATED " .. r)
