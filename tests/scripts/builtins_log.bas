REM Print and WriteLn write to the log (standard error), never to the result.
DIM RESULT = "done"
DIM e
Print("first entry " & 1.5)
writeln(e)
WriteLn(Array(1, "b"))
