-- Recursive functions: Fibonacci of 15 and the moves of the towers of Hanoi with 8 discs.
-- Unit: both (1,973 + 255 calls).
local function fib(n)
  if n < 2 then return n else return fib(n - 1) + fib(n - 2) end
end
local function hanoi(discs, from, towards, via)
  if discs == 0 then return 0 end
  return hanoi(discs - 1, from, via, towards) + 1 + hanoi(discs - 1, via, towards, from)
end
local total = 0
for rep = 1, tonumber(arg[1]) do
  total = total + fib(15) + hanoi(8, 1, 3, 2)
end
print(total)
