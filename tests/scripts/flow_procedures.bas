REM Procedures: parameters, the three names of a function's result, recursion, __func__,
REM EXIT ending a call, and a body that ends by an exception keeping what it had.
DIM RESULT = ""
FUNCTION Add(a, b)
  Add = a + b
END FUNCTION
FUNCTION Add2(a, b)
  result = a + b
END FUNCTION
REM A line starting with "function" would open a definition, so that name is only read.
FUNCTION Twice(x)
  result = x
  Twice = function * 2
END FUNCTION
FUNCTION Fact(n)
  IF n <= 1 THEN
    Fact = 1
  ELSE
    Fact = n * Fact(n - 1)
  END IF
END FUNCTION
FUNCTION Unset(x)
END FUNCTION
FUNCTION Early(x)
  Early = "early"
  EXIT
  Early = "late"
END FUNCTION
REM __func__ may not end a line: a trailing "_" continues the line.
FUNCTION Who(x)
  Who = __func__ & ""
END FUNCTION
FUNCTION Boom(x)
  Boom = "partial"
  ECHO x
  Boom = "never"
END FUNCTION
REM Assignment falls back to the root script's variables; reading does not.
SUB Store (v)
  g = v * 2
END SUB
DIM g = 0
Store(21)
RESULT = Add(1, 2) & "|" & Add2(3, 4) & "|" & Twice(5) & "|" & Fact(10) & "|" & g
RESULT = RESULT & "|[" & Unset(1) & "]|" & Early(1) & "|" & Who(1) & "|" & Boom(1)
