REM A small release plan: milestones counted from a start date, with a budget per quarter.
REM Run with: lxbasic examples/dates.bas
DIM RESULT = ""
DIM start = DateSerial(2024, 1, 31)
DIM beta = DateAdd("m", 1, start)
DIM release = DateAdd("ww", 10, beta)
DIM days = DateDiff("d", start, release)
DIM weeks = DateDiff("ww", start, release)
DIM budget = 125000.5

DIM plan = "Start " & FormatDateTime(start, vbLongDate)
plan = plan & "; beta " & FormatDateTime(beta, vbShortDate)
plan = plan & " (one month after 31 January is " & MonthName(Month(beta)) & " " & Day(beta) & ")"
plan = plan & "; release " & FormatDateTime(release, vbShortDate)
plan = plan & " in quarter " & DatePart("q", release) & " of " & Year(release)
plan = plan & "; " & days & " days, " & weeks & " weeks"
plan = plan & "; budget " & FormatCurrency(budget, 2, -1, 0, -1)
plan = plan & " or " & FormatNumber(budget / days, 2) & " a day"
plan = plan & ", " & FormatPercent(days / 366, 1) & " of the year"
RESULT = plan
