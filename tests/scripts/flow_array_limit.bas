REM Arrays past the element limit are script errors of their line ("Out of memory"), which
REM ON ERROR RESUME NEXT traps, whether one list or the product of the bounds is too big.
DIM RESULT = ""
ON ERROR RESUME NEXT
DIM a(100000000)
RESULT = Number@(err)
Clear@(err)
DIM g(100000, 100000)
RESULT = RESULT & " " & Number@(err)
Clear@(err)
DIM h(65535, 65535)
RESULT = RESULT & " " & Number@(err)
Clear@(err)
DIM r(2)
REDIM PRESERVE r(100000000)
RESULT = RESULT & " " & Number@(err) & " " & UBound(r)
Clear@(err)
ON ERROR GOTO 0
DIM last(3, 20000000)
RESULT = "not reached"
