REM Arrays that share their sub-arrays stand for 10^60 elements in a few kilobytes. Their
REM text is cut after 1,048,576 characters and ends with "...[cut]", wherever it is made.
DIM a = Array(1, 2)
FOR i = 1 TO 60
  a = Array(a, a, a, a, a, a, a, a, a, a)
NEXT
DIM t = a & ""
DIM RESULT = Len(t) & " " & Right(t, 12) & " " & Len(Join(a, ",")) & " " & ("x" < a)
RESULT = RESULT & " " & Len(CStr(a)) & " " & Left(a, 12)
