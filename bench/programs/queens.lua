-- The solutions of the 7-queens puzzle, counted by backtracking. Unit: one count.
local function place(row, size, cols, up, down)
  if row == size then return 1 end
  local count = 0
  for c = 0, size - 1 do
    if cols[c] == 0 and up[row + c] == 0 and down[row - c + size] == 0 then
      cols[c], up[row + c], down[row - c + size] = 1, 1, 1
      count = count + place(row + 1, size, cols, up, down)
      cols[c], up[row + c], down[row - c + size] = 0, 0, 0
    end
  end
  return count
end
local size = 7
local cols, up, down = {}, {}, {}
for i = 0, 2 * size do cols[i], up[i], down[i] = 0, 0, 0 end
local total = 0
for rep = 1, tonumber(arg[1]) do
  total = total + place(0, size, cols, up, down)
end
print(total)
