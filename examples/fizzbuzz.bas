REM fizzbuzz.bas: a FOR loop, single-line and block IF, and a FUNCTION.
REM Counts from 1 to 15, saying Fizz for multiples of 3 and Buzz for multiples of 5.

FUNCTION Say(n)
  REM Inside a FUNCTION, assigning to its name (or to RESULT) sets the value it returns.
  Say = n
  IF Mod(n, 3) = 0 THEN Say = "Fizz"
  IF Mod(n, 5) = 0 THEN Say = "Buzz"
  IF Mod(n, 15) = 0 THEN Say = "FizzBuzz"
END FUNCTION

DIM RESULT = ""
DIM fizzes = 0
FOR i = 1 TO 15
  IF i > 1 THEN RESULT = RESULT & " "
  RESULT = RESULT & Say(i)
  IF Mod(i, 3) = 0 THEN
    fizzes = fizzes + 1
  END IF
NEXT
RESULT = RESULT & " (" & fizzes & " multiples of 3)"
