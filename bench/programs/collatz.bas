REM Collatz chains of the numbers below 1000, their lengths cached in an array and the
REM longest found. Unit: one pass over the numbers with a fresh cache.
DIM limit = 1000
DIM cache(limit)
DIM n = 0, steps = 0, best = 0, bestStart = 0, total = 0
FOR rep = 1 TO @N@
  FOR i = 0 TO limit
    cache(i) = 0
  NEXT
  cache(1) = 1
  best = 0
  FOR start = 2 TO limit - 1
    n = start
    steps = 0
    DO
      IF n < limit THEN
        IF cache(n) > 0 THEN EXIT DO
      END IF
      IF Mod(n, 2) = 0 THEN
        n = n \ 2
      ELSE
        n = 3 * n + 1
      END IF
      steps = steps + 1
    LOOP
    steps = steps + cache(n)
    cache(start) = steps
    IF steps > best THEN
      best = steps
      bestStart = start
    END IF
  NEXT
  total = total + best
NEXT
DIM RESULT = total & " " & bestStart
