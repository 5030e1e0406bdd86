REM Once the input has ended every dialog answers at once: MsgBox -1, InputBox its default.
REM 4 + 32 + 256 loses only its 256 flag and shows OK alone; "x" and 9 are not choices.
DIM RESULT = ""
DIM i
FOR i = 1 TO 3
  RESULT = RESULT & MsgBox("Round " & i, 4 + 32 + 256) & ","
NEXT
RESULT = RESULT & InputBox("Last?", "", "kept", 300) & ","
RESULT = RESULT & InputBox("Really?", "T", "d", 1, 2)
