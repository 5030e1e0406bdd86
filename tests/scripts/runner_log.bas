REM Print lines go to standard error; standard output keeps only RESULT.
Print("to the log")
WriteLn("and more")
DIM RESULT = "out"
