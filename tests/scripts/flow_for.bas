REM FOR counts in 32-bit integers from the start to the truncated limit and leaves the
REM variable at the first value past it.
DIM RESULT = ""
DIM s = ""
FOR i = 1 TO 3
  s = s & i
NEXT
s = s & "/" & i & " "
FOR j = 3 TO 1 STEP -1
  s = s & j
NEXT
s = s & "/" & j & " "
FOR k = 5 TO 1
  s = s & "never"
NEXT
s = s & "/" & k & " "
FOR m = 1.5 TO 2.9
  s = s & m & ","
NEXT
s = s & "/" & m & " "
FOR n = 1 TO 10 STEP 4.7
  s = s & n
NEXT
s = s & "/" & n & " "
REM EXIT FOR sets the variable to the limit; NEXT then steps past it.
FOR i = 1 TO 10
  IF i = 4 THEN EXIT FOR
  s = s & i
NEXT
s = s & "/" & i & " "
REM CONTINUE FOR switches the body off for every remaining pass, but single-line IFs
REM still run because conditionals only look at their own stack.
DIM seen = 0
FOR i = 1 TO 5
  IF i = 2 THEN CONTINUE FOR
  IF i = 4 THEN seen = i
  s = s & i
NEXT
s = s & "/" & i & "/" & seen & " "
REM EXIT FOR with no open FOR is silently ignored.
EXIT FOR
REM A FOR nested in a skipped loop body keeps its body skipped.
FOR a = 1 TO 2
  CONTINUE FOR
  FOR b = 1 TO 2
    s = s & "never"
  NEXT
NEXT
s = s & a & b
RESULT = s
