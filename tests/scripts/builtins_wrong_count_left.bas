REM A built-in called with an argument count it does not accept is no function at all.
DIM RESULT = "before"
RESULT = left("abc")
RESULT = "after"
