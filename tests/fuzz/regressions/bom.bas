DIM r = 1
