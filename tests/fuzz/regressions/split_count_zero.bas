DIM p = Split("a", "a", 0)
