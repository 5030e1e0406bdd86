REM WeekdayName of an acceptable day fails inside the call and ends the run.
DIM RESULT = WeekdayName(8)
RESULT = "before"
RESULT = WeekdayName(1)
RESULT = "after"
