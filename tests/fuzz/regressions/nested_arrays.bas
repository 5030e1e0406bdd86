DIM a = Array()
FOR i = 1 TO 100000
a = Array(a)
NEXT
Print(a)
