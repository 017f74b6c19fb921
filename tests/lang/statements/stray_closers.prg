* Stray closing keywords are recorded; the lines after them still compile.
? "never runs"
ENDIF
ELSE
EXIT
ENDWITH
x = (
