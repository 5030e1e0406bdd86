REM Insertion sort and selection sort of 200 pseudo-random numbers, then a binary search
REM for each of 200 keys. Unit: both sorts and the searches.
DIM size = 200
DIM a(size - 1), b(size - 1)
DIM seed = 12345, found = 0, key = 0, j = 0, lo = 0, hi = 0, mid = 0, least = 0, t = 0
FOR rep = 1 TO @N@
  FOR i = 0 TO size - 1
    seed = Mod(seed * 75 + 74, 65537)
    a(i) = seed
    b(i) = seed
  NEXT
  FOR i = 1 TO size - 1
    key = a(i)
    j = i - 1
    WHILE j >= 0 AND a(j) > key
      a(j + 1) = a(j)
      j = j - 1
      IF j < 0 THEN EXIT WHILE
    WEND
    a(j + 1) = key
  NEXT
  FOR i = 0 TO size - 2
    least = i
    FOR k = i + 1 TO size - 1
      IF b(k) < b(least) THEN least = k
    NEXT
    t = b(i)
    b(i) = b(least)
    b(least) = t
  NEXT
  FOR i = 0 TO size - 1
    key = Mod(i * 331, 65537)
    lo = 0
    hi = size - 1
    DO WHILE lo <= hi
      mid = (lo + hi) \ 2
      IF a(mid) = key AND b(mid) = key THEN
        found = found + 1
        EXIT DO
      END IF
      IF a(mid) < key THEN
        lo = mid + 1
      ELSE
        hi = mid - 1
      END IF
    LOOP
  NEXT
NEXT
DIM RESULT = found & " " & a(0) & " " & a(size - 1) & " " & b(size \ 2)
