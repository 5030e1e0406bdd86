REM Unit: one FOR iteration of an arithmetic assignment.
DIM s = 0
FOR i = 1 TO @N@
  s = s + i * 2
NEXT
DIM RESULT = s
