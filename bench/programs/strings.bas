REM Building texts: 300 labels made from numbers, kept in a list, joined, searched and cut.
REM Unit: one list built and examined.
DIM size = 300
DIM names(size - 1)
DIM text = "", hits = 0, total = 0, label = ""
FOR rep = 1 TO @N@
  FOR i = 0 TO size - 1
    label = "item-" & i
    IF Mod(i, 3) = 0 THEN label = UCase(label)
    names(i) = label & ";"
  NEXT
  text = Join(names, "")
  hits = 0
  FOR i = 0 TO size - 1 STEP 7
    IF InStr(text, "ITEM-" & i & ";") > 0 THEN hits = hits + 1
  NEXT
  total = total + Len(text) + hits + Len(Mid(text, 100, 50))
NEXT
DIM RESULT = total & " " & Left(text, 20)
