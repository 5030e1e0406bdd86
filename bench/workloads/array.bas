REM Unit: one FOR iteration that reads an array element (the elements are Empty).
DIM a(@N@), s = 0
FOR i = 1 TO @N@
  s = s + a(i)
NEXT
DIM RESULT = s
