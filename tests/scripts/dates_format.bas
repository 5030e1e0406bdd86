REM Number formats build their patterns from the arguments; only -1 groups digits, exact
REM zero shows the zero section, and vbLongTime shows the full date.
DIM RESULT = ""
DIM s = FormatNumber(1234567.891) & "|" & FormatNumber(1234567.891, 2, -2, -2, -1)
s = s & "|" & FormatNumber(1234567.891, 2, -2, -2, 1) & "|" & FormatNumber(-5, 2, -1, 1)
s = s & "|" & FormatNumber(0.5, 2, 0) & "|" & FormatNumber(0) & "|" & FormatNumber("12abc")
s = s & "|" & FormatCurrency(-3) & "|" & FormatCurrency(0) & "|" & FormatPercent(0.256, 1) & "|" & FormatPercent(0)
s = s & "|" & FormatNumber(2.5, 0) & FormatNumber(3.5, 0)
s = s & "|" & FormatDateTime(45322, vbGeneralDate) & "|" & FormatDateTime(45322, vbLongTime)
s = s & "|" & FormatDateTime(45322, vbShortDate)
RESULT = s
