REM MsgBox and InputBox on the console: answers by number, by title and by Return.
DIM a = MsgBox("Proceed?", vbYesNoCancel + vbDefaultButton2, "Question")
DIM b = MsgBox("Literal 100%d", vbCritical)
DIM c = MsgBox("Again?", vbRetryCancel + vbExclamation, "Retry")
DIM d = InputBox("Name?", "Who", "Bob")
DIM e = InputBox("Name?", "Who", "Bob")
DIM f = InputBox("City?")
DIM RESULT = a & " " & b & " " & c & " " & d & " " & e & " " & f
