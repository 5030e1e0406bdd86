-- Collatz chains of the numbers below 1000, their lengths cached in an array and the
-- longest found. Unit: one pass over the numbers with a fresh cache.
local limit = 1000
local cache = {}
local total, bestStart = 0, 0
for rep = 1, tonumber(arg[1]) do
  for i = 0, limit do cache[i] = 0 end
  cache[1] = 1
  local best = 0
  for start = 2, limit - 1 do
    local n, steps = start, 0
    while true do
      if n < limit then
        if cache[n] > 0 then break end
      end
      if n % 2 == 0 then n = n // 2 else n = 3 * n + 1 end
      steps = steps + 1
    end
    steps = steps + cache[n]
    cache[start] = steps
    if steps > best then best, bestStart = steps, start end
  end
  total = total + best
end
print(total .. " " .. bestStart)
