REM A script that never makes RESULT prints nothing.
DIM x = 1
x = x + 1
