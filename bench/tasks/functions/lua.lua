local function fna(x) return x * 2 + 1 end
local function fnb(x) return fna(x) + fna(x + 1) end
local function fnc(x, y) return fnb(x) - fnb(y) + x end
local r = 1000
local c
for k = 1, r do
  c = 0
  for i = 1, 1000 do
    c = c + fnc(i, i - 2)
  end
end
print(string.format("CHECK %.0f", c))
print("REPEATED " .. r)
