REM Latin-1 bytes are not UTF-8: the runner refuses the file.
DIM RESULT = "Grüße"
