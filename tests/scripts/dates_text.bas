REM CDate reads common notations and refuses what it cannot read; month names come from
REM the locale.
DIM RESULT = ""
DIM s = CDate("January 31, 2024 2:05 PM") & "|" & CDate("31-Jan-2024") & "|" & CDate("2024-01-31T14:05:00+01:00")
s = s & "|" & IsDate("1/31/2024") & IsDate("31/1/2024") & IsDate("2023-02-29") & IsDate(36526) & IsDate("36526")
s = s & "|" & Year("garbage") & "|" & TimeValue("2024-01-31 13:45:30") & "|" & DateValue("2024-01-31 13:45:30")
s = s & "|" & MonthName(1) & "," & MonthName(9, 3) & "," & MonthName(13) & "," & WeekdayName(0)
RESULT = s
