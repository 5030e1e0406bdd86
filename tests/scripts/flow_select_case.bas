REM SELECT CASE is refused even inside a branch that is being skipped.
DIM RESULT = "before"
IF 0 THEN
  SELECT CASE RESULT
END IF
RESULT = "after"
