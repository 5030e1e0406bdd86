-- Sieve of Eratosthenes: the primes below 5000, counted. Unit: one sieve.
local limit = 5000
local flags = {}
local total = 0
for rep = 1, tonumber(arg[1]) do
  for i = 2, limit do flags[i] = 1 end
  local count = 0
  for i = 2, limit do
    if flags[i] == 1 then
      count = count + 1
      local j = i * i
      while j <= limit do
        flags[j] = 0
        j = j + i
      end
    end
  end
  total = total + count
end
print(total)
