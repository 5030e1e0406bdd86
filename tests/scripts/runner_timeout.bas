REM With a time limit an endless loop is stopped with error 31.
DIM n = 0
WHILE 1
  n = n + 1
WEND
