local n = tonumber(arg[1])
local s = 0
for i = 1, n do
  s = s + i * 2
end
print(s)
