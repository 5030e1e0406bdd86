REM The solutions of the 7-queens puzzle, counted by backtracking. Unit: one count.
FUNCTION Place(row, size, cols, up, down)
  DIM count = 0
  IF row = size THEN
    Place = 1
  ELSE
    FOR c = 0 TO size - 1
      IF cols(c) = 0 AND up(row + c) = 0 AND down(row - c + size) = 0 THEN
        cols(c) = 1
        up(row + c) = 1
        down(row - c + size) = 1
        count = count + Place(row + 1, size, cols, up, down)
        cols(c) = 0
        up(row + c) = 0
        down(row - c + size) = 0
      END IF
    NEXT
    Place = count
  END IF
END FUNCTION
DIM size = 7
DIM cols(size), up(2 * size), down(2 * size)
DIM total = 0
FOR i = 0 TO 2 * size
  up(i) = 0
  down(i) = 0
  IF i <= size THEN cols(i) = 0
NEXT
FOR rep = 1 TO @N@
  total = total + Place(0, size, cols, up, down)
NEXT
DIM RESULT = total
