DIM a(1)
a(0) = a
a = 0
