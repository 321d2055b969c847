local a, b, p = {}, {}, {}
for i = 1, 12 do
  a[i], b[i], p[i] = {}, {}, {}
end
local r = 7000
local c
for k = 1, r do
  for i = 1, 12 do
    for j = 1, 12 do
      a[i][j] = i + j
      b[i][j] = i - j
    end
  end
  for i = 1, 12 do
    for j = 1, 12 do
      local s = 0
      for l = 1, 12 do
        s = s + a[i][l] * b[l][j]
      end
      p[i][j] = s
    end
  end
  c = 0
  for i = 1, 12 do
    c = c + p[i][i] + p[i][13 - i]
  end
end
print(string.format("CHECK %.0f", c))
print("REPEATED " .. r)
