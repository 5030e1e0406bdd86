REM With no variable E, the else-part left by a trailing ELSE fails as an unknown variable.
DIM RESULT = "before"
DIM x = 1
IF x = 2 THEN RESULT = "then" ELSE
RESULT = "after"
