REM With a count of 0 Split never ends by itself: the time limit ends the run.
DIM RESULT = "before"
DIM parts = Split("a,b", ",", 0)
RESULT = "after"
