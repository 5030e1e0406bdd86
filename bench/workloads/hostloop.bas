REM Unit: one FOR iteration of the loop hostcall.bas has, without the host call.
DIM s = 0
FOR i = 1 TO @N@
  s = i
NEXT
DIM RESULT = s
