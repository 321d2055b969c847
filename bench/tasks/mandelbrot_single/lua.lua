local r = 2000
local c
for k = 1, r do
  c = 0
  for y = 0, 15 do
    local b = y / 8 - 1
    for x = 0, 23 do
      local a = x / 8 - 2
      local u, v, i, p, q = 0.0, 0.0, 0, 0.0, 0.0
      while i < 30 and p + q <= 4 do
        v = 2 * u * v + b
        u = p - q + a
        p = u * u
        q = v * v
        i = i + 1
      end
      c = c + i
    end
  end
end
print(string.format("CHECK %.0f", c))
print("REPEATED " .. r)
