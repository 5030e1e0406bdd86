REM Unit: one FOR iteration of a concatenation and two string built-ins.
DIM t, n = 0
FOR i = 1 TO @N@
  t = "item" & i
  n = n + Len(t) + InStr(t, "9")
NEXT
DIM RESULT = n
