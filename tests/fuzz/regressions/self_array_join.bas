DIM a(1)
a(0) = a
DIM s = Join(a, ",")
