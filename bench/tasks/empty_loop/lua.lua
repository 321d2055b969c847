local r = 700
local c
for k = 1, r do
  for i = 1, 100000 do
  end
end
print(string.format("CHECK %.0f", 100000))
print("REPEATED " .. r)
