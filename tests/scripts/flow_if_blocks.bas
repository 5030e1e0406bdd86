REM Block IFs nested in skipped regions keep their own entries; ELSE flips only live blocks.
DIM RESULT = ""
DIM a = 0
DIM b = 1
IF a THEN
  RESULT = RESULT & "A"
  IF b THEN
    RESULT = RESULT & "B"
  ELSE
    RESULT = RESULT & "C"
  END IF
  RESULT = RESULT & "D"
ELSE
  RESULT = RESULT & "E"
  IF b = 1 THEN
    RESULT = RESULT & "F"
  ELSE
    RESULT = RESULT & "G"
  END IF
END IF
REM The lone word ENDIF is skipped in a skipped region, so the block stays open.
IF a = 1 THEN
  RESULT = RESULT & "H"
ENDIF
  RESULT = RESULT & "I"
END IF
RESULT = RESULT & "J"
REM A line whose second word is ENDIF does close.
IF b THEN
  RESULT = RESULT & "K"
END ENDIF
RESULT = RESULT & "L"
REM Nothing records an ELSE already seen: a second one flips again.
IF a THEN
ELSE
  RESULT = RESULT & "M"
ELSE
  RESULT = RESULT & "N"
END IF
REM Loop headers inside a false branch are never dispatched.
IF a THEN
  FOR i = 1 TO 3
    RESULT = RESULT & "O"
  NEXT
END IF
RESULT = RESULT & "P"
