DIM a(1), b(1)
a(0) = a
b(0) = b
IF a = b THEN a = 1
