REM The runner prints RESULT as text, with one line feed.
DIM greeting = "Hello"
DIM RESULT = greeting & ", " & (40 + 2)
