REM Calendar arithmetic: out-of-range parts roll over, months are added field by field,
REM DatePart keeps its quarter formula and its case-sensitive interval.
DIM RESULT = ""
DIM d = DateSerial(2023, 1, 31)
DIM s = Day(DateAdd("m", 1, d)) & "." & Month(DateAdd("m", 1, d))
s = s & " " & Day(DateAdd("M", 1, DateSerial(2024, 1, 31))) & "." & Month(DateAdd("m", 1, DateSerial(2024, 1, 31)))
s = s & " " & Year(DateSerial(2023, 13, 1)) & "-" & Month(DateSerial(2023, 13, 1))
s = s & " " & Day(DateSerial(2024, 3, 0))
s = s & " " & DateAdd("x", 5, d) & " / " & DateAdd("d", 1.9, d)
s = s & " q:" & DatePart("q", DateSerial(2024, 2, 1)) & DatePart("q", DateSerial(2024, 3, 1)) & DatePart("q", DateSerial(2024, 12, 1))
s = s & " Q:" & DatePart("Q", d) & " ww:" & DatePart("ww", DateSerial(2024, 1, 8))
s = s & " y:" & DatePart("y", DateSerial(2024, 12, 31)) & " w:" & Weekday(DateSerial(2024, 1, 31))
DIM late = CDate("2023-12-31 23:59")
DIM early = CDate("2024-01-01 00:01")
s = s & " diff:" & DateDiff("d", late, early) & "," & DateDiff("s", late, early) & "," & DateDiff("yyyy", late, early)
s = s & "," & DateDiff("m", late, early) & "," & DateDiff("h", late, early) & "," & DateDiff("w", DateSerial(2024, 1, 15), DateSerial(2024, 3, 20))
s = s & " serial:" & CDbl(DateSerial(2000, 1, 1)) & "," & CDate(2.25) & "," & CDate(-1.25)
RESULT = s
