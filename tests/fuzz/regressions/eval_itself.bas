DIM x = "Eval(x)"
Eval(x)
