REM Split and Join round trips, and the other array built-ins on their results.
DIM RESULT = ""
DIM s = "alpha,beta,,gamma"
DIM parts = Split(s, ",")
RESULT = UBound(parts) & "|" & Join(parts, ",") & "|" & (Join(parts, ",") = s) & "|" & parts(2) & "|" & parts(3)
RESULT = RESULT & "|" & Join(Split("a b  c")) & "|" & UBound(Split("a b  c")) & "|" & UBound(Split("a,b,", ",")) & "|" & UBound(Split("")) & "|" & Join(Split(",a", ","), "/")
RESULT = RESULT & "|" & Join(Split("aXbxc", "x", -1, vbTextCompare), "-") & "|" & Join(Split("aXbxc", "x", 2), "-") & "|" & Join(split("a::b::c", "::"), "")
RESULT = RESULT & "|" & Join(Filter(Array("apple", "pear", "plum"), "pe", 0, 0), "+") & "|" & Join(Filter(Array("Ab", "cd"), "a", 1, vbTextCompare)) & "|" & Join(Array())
RESULT = RESULT & "|" & IsNull(Join(5)) & "|" & UBound(Array(1, 2), 2) & "|" & LBound(5)
