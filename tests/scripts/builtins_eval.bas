REM Eval runs its text as an expression of this script, with the script's own variables.
DIM RESULT = ""
DIM x = 20
DIM s = "Hello"
RESULT = Eval("x * 2 + 2") & "|" & eval("  UCase(s) & ""!""  ") & "|" & Eval("Len(s) + 1")
RESULT = RESULT & "|" & Eval("x - 1" & Chr(10) & "x = 0") & "|" & x & "|" & IsNull(Eval(""))
