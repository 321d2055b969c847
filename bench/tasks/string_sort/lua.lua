local data = {
  "pear", "fig", "apple", "quince", "plum", "grape", "lemon", "mango",
  "date", "kiwi", "peach", "melon", "cherry", "lime", "orange", "guava",
  "papaya", "olive", "currant", "banana", "berry", "apricot", "nectarine", "tangerine",
  "medlar", "damson", "lychee", "citron", "pomelo", "rowan", "sloe", "elder"
}
local w = {}
local r = 20000
local c
for k = 1, r do
  for i = 1, 32 do
    w[i] = data[i]
  end
  for i = 1, 31 do
    for j = i + 1, 32 do
      if w[j] < w[i] then w[i], w[j] = w[j], w[i] end
    end
  end
  c = 0
  for i = 1, 32 do
    c = c + i * w[i]:byte() + #w[i]
  end
end
print(string.format("CHECK %.0f", c))
print("REPEATED " .. r)
