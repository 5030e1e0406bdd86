REM Recursive functions: Fibonacci of 15 and the moves of the towers of Hanoi with 8 discs.
REM Unit: both (1,973 + 255 calls).
FUNCTION Fib(n)
  IF n < 2 THEN
    Fib = n
  ELSE
    Fib = Fib(n - 1) + Fib(n - 2)
  END IF
END FUNCTION
FUNCTION Hanoi(discs, from, towards, via)
  IF discs = 0 THEN
    Hanoi = 0
  ELSE
    Hanoi = Hanoi(discs - 1, from, via, towards) + 1 + Hanoi(discs - 1, via, towards, from)
  END IF
END FUNCTION
DIM total = 0
FOR rep = 1 TO @N@
  total = total + Fib(15) + Hanoi(8, 1, 3, 2)
NEXT
DIM RESULT = total
