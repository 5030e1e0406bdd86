REM Non-ASCII text passes through unchanged.
DIM word = "Grüße"
DIM RESULT = word & ", 世界 " & Len(word)
