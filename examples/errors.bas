REM errors.bas: trapping errors with ON ERROR.
REM Without ON ERROR the first failing line ends the script. After ON ERROR RESUME NEXT the
REM script goes on, and err describes the last failure until it is cleared.
DIM RESULT = ""
DIM total = 10, parts = 0, share

ON ERROR RESUME NEXT
share = total / parts
RESULT = "Dividing failed with error " & Number@(err) & " - " & Description@(err) & ". "
Clear@(err)

undeclared = 1
RESULT = RESULT & "Then error " & Number@(err) & " - " & Description@(err) & "."

REM ON ERROR GOTO 0 stops the tolerance and forgets the last error, so the run ends cleanly.
ON ERROR GOTO 0
