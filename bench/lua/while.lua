local n = tonumber(arg[1])
local k, even, s = 0, 0, ""
while k < n do
  k = k + 1
  if (k // 2) * 2 == k then
    even = even + 1
  else
    s = s .. k
    if #s > 30 then s = "" end
  end
end
print(even .. ":" .. s)
