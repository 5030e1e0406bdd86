REM Single-line IF runs exactly one part, and only when its region is live.
DIM RESULT = ""
DIM x = 1
DIM y = 0
IF x = 1 THEN y = 2 ELSE y = 3
RESULT = RESULT & y
IF x = 2 THEN y = 2 ELSE y = 3
RESULT = RESULT & y
IF x = 2 THEN y = 5
RESULT = RESULT & y
IF x = 1 AND y = 3 THEN RESULT = RESULT & "and"
IF 0 THEN
  IF 1 THEN RESULT = RESULT & "skipped"
END IF
REM ELSE as the last word: the else-part is its final letter, run as a statement.
DIM E = 0
IF x = 1 THEN RESULT = RESULT & "|then" ELSE
IF x = 2 THEN RESULT = RESULT & "|never" ELSE
RESULT = RESULT & "|" & E
