REM WHILE and the DO forms, with EXIT and CONTINUE acting on the kind of loop named.
DIM RESULT = ""
DIM s = ""
DIM w = 0
WHILE w < 3
  w = w + 1
  s = s & w
WEND
s = s & " "
REM CONTINUE WHILE ends the loop: WEND does not re-evaluate a switched-off record.
w = 0
WHILE w < 5
  w = w + 1
  IF w = 3 THEN CONTINUE WHILE
  s = s & w
WEND
s = s & "/" & w & " "
REM Loop conditions read the leading integer of the value's text.
WHILE 0.5
  s = s & "never"
WEND
WHILE "1"
  s = s & "string"
  EXIT WHILE
WEND
s = s & " "
REM CONTINUE DO on a loop with a condition goes on with the next pass.
DIM d = 0
DO WHILE d < 10
  d = d + 1
  IF d = 2 THEN CONTINUE DO
  IF d = 4 THEN EXIT DO
  s = s & d
LOOP
s = s & "/" & d & " "
DIM u = 0
DO UNTIL u >= 3
  u = u + 1
LOOP
s = s & u
u = 0
DO
  u = u + 1
LOOP UNTIL u >= 5
s = s & u
u = 0
DO
  u = u + 1
LOOP WHILE u < 2
s = s & u & " "
REM Once EXIT DO has set the condition, the LOOP line's own condition is never read.
DIM e = 0
DO
  e = e + 1
  IF e = 3 THEN EXIT DO
LOOP WHILE 1
s = s & e
REM A DO without a condition ends on CONTINUE DO, since nothing switches it back on.
DIM c = 0
DO
  c = c + 1
  IF c = 2 THEN CONTINUE DO
LOOP
s = s & c & " "
REM EXIT WHILE from inside a FOR ends both; the FOR pops at its NEXT.
DIM n = 0
WHILE 1
  n = n + 1
  FOR q = 1 TO 3
    IF q = 2 THEN EXIT WHILE
    s = s & n & q
  NEXT
  s = s & "never"
WEND
s = s & "/" & q
RESULT = s
