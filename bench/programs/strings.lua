-- Building texts: 300 labels made from numbers, kept in a list, joined, searched and cut.
-- Unit: one list built and examined.
local size = 300
local names = {}
local text, total = "", 0
for rep = 1, tonumber(arg[1]) do
  for i = 0, size - 1 do
    local label = "item-" .. i
    if i % 3 == 0 then label = string.upper(label) end
    names[i + 1] = label .. ";"
  end
  text = table.concat(names, "")
  local hits = 0
  for i = 0, size - 1, 7 do
    if string.find(text, "ITEM-" .. i .. ";", 1, true) then hits = hits + 1 end
  end
  total = total + #text + hits + #string.sub(text, 100, 149)
end
print(total .. " " .. string.sub(text, 1, 20))
