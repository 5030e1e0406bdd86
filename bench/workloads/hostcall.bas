REM Unit: one FOR iteration that calls a host method; the loop alone is hostloop.bas.
DIM s = 0
FOR i = 1 TO @N@
  s = Twice(i)
NEXT
DIM RESULT = s
