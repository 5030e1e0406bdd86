REM Conversion, math and bit built-ins with the values scripts pass them.
DIM RESULT = ""
DIM e
RESULT = CInt("12abc") & "|" & cint(-3.99) & "|" & CLng("5000000000") & "|" & CByte(200) & "|" & CBool("yes") & "|" & CBool(0.5) & "|" & CStr(e)
RESULT = RESULT & "|" & Asc("A") & "|" & Asc(e) & "|" & Chr(65) & "|" & Hex(-1) & "|" & hex(255) & "|" & Oct(8) & "|" & CDbl("1.5e3")
RESULT = RESULT & "|" & Int(-2.5) & "|" & Fix(2.9) & "|" & Abs(-4) & "|" & Sgn(-7) & "|" & Sqr(16) & "|" & Mod(-7, 3) & "|" & Mod(7, 0)
RESULT = RESULT & "|" & Round(2.5) & "|" & Round(-2.5) & "|" & Round(1.005, 2) & "|" & round(0.125, 2) & "|" & Round(5, 10)
RESULT = RESULT & "|" & LShift(1, 31) & "|" & LShift(1, 32) & "|" & RShift(-8, 1) & "|" & BAnd("12", 10) & "|" & BOr(12, 3) & "|" & BXOr(12, 10)
RESULT = RESULT & "|" & Rnd(-1)
DIM r = Rnd(1)
RESULT = RESULT & "|" & (r < 0.0000000001) & "|" & (Rnd(-1) = r) & "|" & Int(Array(1))
