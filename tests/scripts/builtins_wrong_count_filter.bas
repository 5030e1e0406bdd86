REM Filter has a 2- and a 4-argument form but no 3-argument one.
DIM RESULT = "before"
RESULT = Join(Filter(Array("a", "b"), "a", 1))
RESULT = "after"
