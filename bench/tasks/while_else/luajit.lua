local floor = math.floor
local r = 2000
local c
for k = 1, r do
  c = 0
  for n = 1, 100 do
    local x = n
    while x > 1 do
      local h = floor(x / 2)
      if h * 2 == x then x = h else x = x * 3 + 1 end
      c = c + 1
    end
  end
end
print(string.format("CHECK %.0f", c))
print("REPEATED " .. r)
