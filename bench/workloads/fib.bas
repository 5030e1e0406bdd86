REM Unit: one call of a recursive function; Fib(N) makes 2 * Fib(N + 1) - 1 calls.
FUNCTION Fib(n)
  IF n < 2 THEN Fib = n ELSE Fib = Fib(n - 1) + Fib(n - 2)
END FUNCTION
DIM RESULT = Fib(@N@)
