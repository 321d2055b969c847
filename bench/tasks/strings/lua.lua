local char, sub, find = string.char, string.sub, string.find
local r = 20000
local c
for k = 1, r do
  local s = ""
  for i = 1, 60 do
    s = s .. char(65 + (i * 7) % 26)
  end
  c = 0
  for i = 1, 60 do
    if sub(s, i, i) == "E" then c = c + 1 end
  end
  for i = 1, 20 do
    s = sub(s, 2) .. sub(s, 1, 1)
    c = c + (find(s, "OVC", 1, true) or 0) * 2 + #sub(s, i, i + 4)
  end
end
print(string.format("CHECK %.0f", c))
print("REPEATED " .. r)
