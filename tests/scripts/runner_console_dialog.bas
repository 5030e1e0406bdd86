REM With --console the dialogs talk on standard error and read standard input; standard
REM output carries RESULT alone.
DIM RESULT = "Hi " & InputBox("Your name?", "Greeting")
