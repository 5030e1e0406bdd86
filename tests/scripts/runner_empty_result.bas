REM RESULT that exists but holds nothing prints nothing either.
DIM RESULT
