* QUIT is no error: a TRY does not catch it.
TRY
  ? "quitting"
  QUIT
CATCH
  ? "caught quit"
ENDTRY
? "not reached"
