REM The caller's time limit also stops an endless loop inside a procedure.
DIM RESULT = "before"
SUB Spin(x)
  DO
  LOOP
END SUB
Spin(1)
RESULT = "after"
