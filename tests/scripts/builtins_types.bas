REM Type inspection of script values; an Empty variable arrives as the null object.
DIM RESULT = ""
DIM e
DIM a(2)
RESULT = VarType(e) & "|" & TypeName(e) & "|" & IsEmpty(e) & "|" & IsNull(e) & "|" & IsObject(e)
RESULT = RESULT & "|" & VarType("") & "|" & VarType(0) & "|" & VarType((1 = 1)) & "|" & VarType(Array()) & "|" & VarType(a)
RESULT = RESULT & "|" & TypeName(1) & "|" & TypeName((1 = 1)) & "|" & typename("x") & "|" & TypeName(Array(1)) & "|" & IsNumeric("3") & "|" & IsNumeric(3)
RESULT = RESULT & "|" & IsArray(a) & "|" & UBound(a) & "|" & LBound(a) & "|" & IsObject(Array())
RESULT = RESULT & "|" & ScriptEngine() & "|" & ScriptEngineMajorVersion() & "." & ScriptEngineMinorVersion() & "|" & TypeName(ScriptEngineBuildVersion())
