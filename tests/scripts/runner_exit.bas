REM EXIT ends the run normally: exit status 0.
DIM RESULT = "before"
EXIT
RESULT = "after"
