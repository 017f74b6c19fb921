* Whole statements that only exist at run time.
cmd = "y = 5"
&cmd
? y
cmd = "? 'from a macro', y + 1"
&cmd
? twice(4)
cond = "i < 3"
i = 0
DO WHILE &cond
  i = i + 1
ENDDO
? "loops:", i
cond = "i = 3"
IF &cond
  ? "if taken"
ELSE
  ? "if not taken"
ENDIF
cond = "i > 3"
IF &cond
  ? "wrong branch"
ELSE
  ? "else taken"
ENDIF

FUNCTION twice(v)
  cmd = "RETURN v * 2"
  &cmd
  ? "not reached"
  RETURN 0
