REM The 257th nested call overflows; each of the 256 levels on the way out adds 100, and the
REM call from the top adds the last 100.
DIM RESULT = "before"
FUNCTION Deep(n)
  Deep = Deep(n + 1)
END FUNCTION
DIM x = Deep(1)
