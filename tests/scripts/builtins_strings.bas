REM String built-ins called as scripts call them, in any letter case.
DIM RESULT = ""
DIM e
RESULT = left("abc", 2) & "|" & LEFT("abc", 4) & "|" & Right("abc", 2) & "|" & mid("abcdef", 2, 3) & "|" & MID("abcdef", 5)
RESULT = RESULT & "|" & InStr("hello", "l") & "|" & instr(1, "Hello", "h", vbTextCompare) & "|" & InStr(3, "abc", "") & "|" & InStrRev("abcabc", "c")
RESULT = RESULT & "|" & Replace("a-b-c", "-", "+") & "|" & replace("aaa", "a", "b", 2) & "|" & StrComp("a", "B") & "|" & strcomp("a", "B", vbTextCompare)
RESULT = RESULT & "|" & Len(e) & "|" & UCase(e) & "|" & ucase("straße") & "|" & Len("é") & "|" & StrReverse("abc") & "|" & String(3, "xyz") & "|" & Concat("a", 1, "b")
RESULT = RESULT & "|[" & Trim("  x  ") & "][" & LTrim("  x  ") & "][" & RTrim("  x  ") & "][" & Space(2) & "]"
