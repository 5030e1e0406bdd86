REM Concat takes 2 to 10 arguments.
DIM RESULT = "before"
RESULT = Concat("a")
