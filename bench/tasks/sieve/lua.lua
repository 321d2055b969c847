local f = {}
local r = 3000
local c
for k = 1, r do
  c = 0
  for i = 0, 2000 do
    f[i] = 1
  end
  for i = 0, 2000 do
    if f[i] ~= 0 then
      local p = i + i + 3
      local j = i + p
      while j <= 2000 do
        f[j] = 0
        j = j + p
      end
      c = c + 1
    end
  end
end
print(string.format("CHECK %.0f", c))
print("REPEATED " .. r)
