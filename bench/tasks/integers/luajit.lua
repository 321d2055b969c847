local floor = math.floor
local r = 10000
local c
for k = 1, r do
  c = 0
  for i = 1, 1000 do
    local k2 = i % 100 + 1
    local l = k2 * 3 + floor(i / 7)
    c = (c + l * k2) % 1000003
  end
end
print(string.format("CHECK %.0f", c))
print("REPEATED " .. r)
