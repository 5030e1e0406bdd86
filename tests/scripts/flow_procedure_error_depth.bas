REM An error two calls deep arrives with 200 added, the inner line text and no line number.
DIM RESULT = "before"
SUB Inner(v)
  IF v THEN
  END IF
END SUB
SUB Outer(v)
  Inner(v)
END SUB
Outer("yes")
RESULT = "after"
