REM An error that ON ERROR RESUME NEXT let pass stays set; a leading sign is still a sign.
DIM RESULT, b = 0, c = 0
ON ERROR RESUME NEXT
RESULT = zz
RESULT = -1
b = +2 - 5
c = (-3) * 2
ON ERROR GOTO 0
REM Raise@(err, -1) turns the pending error into the signal that ends a run normally.
FUNCTION F()
  ON ERROR RESUME NEXT
  zz = 1
  F = 7
  Raise@(err, -1)
  F = 8
END FUNCTION
RESULT = RESULT & " " & b & " " & c & " " & F()
