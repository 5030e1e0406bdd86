local n = tonumber(arg[1])
local t, count = "", 0
for i = 1, n do
  t = "item" .. i
  count = count + #t + (string.find(t, "9", 1, true) or 0)
end
print(count)
