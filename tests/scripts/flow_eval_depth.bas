REM Eval is a run of the script, not a call: it adds no call level of its own. Only the
REM built-in call from inside a procedure counts, as every built-in call there does.
DIM deepest = 0, RESULT = ""
FUNCTION Deep(n)
  IF n < 255 THEN
    Deep = Deep(n + 1)
  ELSE
    Deep = Eval("7")
  END IF
END FUNCTION
REM Each level is a call and an Eval from a procedure: two levels, so 128 of them fit.
FUNCTION D(k)
  deepest = k
  D = Eval("D(k + 1)")
END FUNCTION
FUNCTION R(n)
  IF n < 256 THEN R = R(n + 1) ELSE R = n
END FUNCTION
RESULT = Deep(1)
ON ERROR RESUME NEXT
DIM ignored = D(1)
RESULT = RESULT & " " & deepest & " " & Number@(err)
Clear@(err)
RESULT = RESULT & " " & Eval("R(1)") & " " & R(1)
REM A text that evaluates itself stops at the nesting limit of Eval.
DIM x = "Eval(x)"
DIM y = Eval(x)
RESULT = RESULT & " " & Number@(err)
ON ERROR GOTO 0
