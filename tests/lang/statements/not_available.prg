* A statement the compiler cannot handle is reported where it stands, like
* every other diagnostic, and nothing of the program runs.
x = 1
? "never printed"
IF x = 1
  SUSPEND
ENDIF
