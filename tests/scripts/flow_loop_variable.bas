REM The variable of any open FOR, not only the innermost, is protected.
DIM RESULT = "before"
FOR i = 1 TO 3
  FOR j = 1 TO 3
    i = 5
  NEXT
NEXT
