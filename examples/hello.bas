REM hello.bas: a first LxBasic script.
REM Whatever the script leaves in RESULT is what the runner prints.
DIM who = "world of scripting"
DIM name = UCase(Left(who, 1)) & Mid(who, 2)
DIM letters = Len(Replace(who, " ", ""))
DIM RESULT
RESULT = "Hello, " & name & "! Your name has " & letters & " letters, and 6 * 7 makes " & 6 * 7 & "."
