DIM a(1)
a(0) = a
DIM f = Filter(a, "x")
