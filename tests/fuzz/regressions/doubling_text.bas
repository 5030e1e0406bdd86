DIM s = "x"
FOR i = 1 TO 40
s = s & s
NEXT
