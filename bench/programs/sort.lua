-- Insertion sort and selection sort of 200 pseudo-random numbers, then a binary search
-- for each of 200 keys. Unit: both sorts and the searches.
local size = 200
local a, b = {}, {}
local seed, found = 12345, 0
for rep = 1, tonumber(arg[1]) do
  for i = 0, size - 1 do
    seed = (seed * 75 + 74) % 65537
    a[i] = seed
    b[i] = seed
  end
  for i = 1, size - 1 do
    local key = a[i]
    local j = i - 1
    while j >= 0 and a[j] > key do
      a[j + 1] = a[j]
      j = j - 1
    end
    a[j + 1] = key
  end
  for i = 0, size - 2 do
    local least = i
    for k = i + 1, size - 1 do
      if b[k] < b[least] then least = k end
    end
    b[i], b[least] = b[least], b[i]
  end
  for i = 0, size - 1 do
    local key = (i * 331) % 65537
    local lo, hi = 0, size - 1
    while lo <= hi do
      local mid = (lo + hi) // 2
      if a[mid] == key and b[mid] == key then
        found = found + 1
        break
      end
      if a[mid] < key then lo = mid + 1 else hi = mid - 1 end
    end
  end
end
print(found .. " " .. a[0] .. " " .. a[size - 1] .. " " .. b[size // 2])
