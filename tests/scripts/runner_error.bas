DIM x = 1
y = 1
