REM Unit: one WHILE pass with a nested IF block and string building.
DIM k = 0, even = 0, s = ""
WHILE k < @N@
  k = k + 1
  IF (k \ 2) * 2 = k THEN
    even = even + 1
  ELSE
    s = s & k
    IF Len(s) > 30 THEN s = ""
  END IF
WEND
DIM RESULT = even & ":" & s
