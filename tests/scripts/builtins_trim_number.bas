REM Trim of a number fails the call itself: the run ends through the exception.
DIM RESULT = "before"
RESULT = Trim(5)
RESULT = "after"
