REM Sieve of Eratosthenes: the primes below 5000, counted. Unit: one sieve.
DIM limit = 5000
DIM flags(limit)
DIM count = 0, total = 0, j = 0
FOR rep = 1 TO @N@
  FOR i = 2 TO limit
    flags(i) = 1
  NEXT
  count = 0
  FOR i = 2 TO limit
    IF flags(i) = 1 THEN
      count = count + 1
      j = i * i
      WHILE j <= limit
        flags(j) = 0
        j = j + i
      WEND
    END IF
  NEXT
  total = total + count
NEXT
DIM RESULT = total
