-- The LxBasic array's elements are Empty, which adds as 0; a missing Lua element is nil.
local n = tonumber(arg[1])
local a = {}
local s = 0
for i = 1, n do
  s = s + (a[i] or 0)
end
print(s)
