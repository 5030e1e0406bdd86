REM Never runs: the command line is refused first.
DIM RESULT = "ran"
