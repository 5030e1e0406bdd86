REM With --console the dialogs talk on standard output and read standard input.
DIM RESULT = "Hi " & InputBox("Your name?", "Greeting")
