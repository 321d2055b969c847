local a = {}
local abs = math.abs
local r = 500
local c
for k = 1, r do
  c = 0
  local p = 1
  a[1] = 0
  while p > 0 do
    ::try::
    a[p] = a[p] + 1
    if a[p] > 7 then
      p = p - 1
    else
      local i = 1
      while i < p do
        local d = a[i] - a[p]
        if d == 0 then goto try end
        if abs(d) == p - i then goto try end
        i = i + 1
      end
      if p == 7 then
        c = c + 1
      else
        p = p + 1
        a[p] = 0
      end
    end
  end
end
print(string.format("CHECK %.0f", c))
print("REPEATED " .. r)
