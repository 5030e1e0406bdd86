REM Sleep waits whole seconds but ends early when the run is stopped.
DIM RESULT = "before"
Sleep(0.9)
RESULT = "slept"
Sleep(40)
RESULT = "after"
