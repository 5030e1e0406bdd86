DIM p = Split(Space(50000000), " ")
