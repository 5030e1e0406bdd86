REM What RESULT held when an error ended the run is still printed.
DIM RESULT = "partial"
RESULT = missing + 1
RESULT = "never"
