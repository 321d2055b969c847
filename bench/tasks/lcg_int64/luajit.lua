local r = 20000
local c
for k = 1, r do
  c = 0
  local x = 12345
  for i = 1, 1000 do
    x = (x * 1664525 + 1013904223) % 4294967296
    c = (c * 31 + x) % 4294967296
  end
end
print(string.format("CHECK %.0f", c))
print("REPEATED " .. r)
