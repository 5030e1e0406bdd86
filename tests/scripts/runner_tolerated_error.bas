REM An error that ON ERROR RESUME NEXT let pass stays recorded and ends up reported.
ON ERROR RESUME NEXT
missing = 1
DIM RESULT = "went on"
