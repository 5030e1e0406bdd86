REM ECHO has no handler: the exception ends the run, exit status 3.
DIM RESULT = "set before"
ECHO "hi"
RESULT = "never"
