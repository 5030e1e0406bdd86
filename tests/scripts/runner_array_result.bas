REM An array RESULT prints in its bracketed text form.
DIM RESULT = Array(1, "two", 3.5)
