REM ON ERROR GOTO 0 forgets the tolerated error: a clean end.
ON ERROR RESUME NEXT
missing = 1
ON ERROR GOTO 0
DIM RESULT = "clean"
