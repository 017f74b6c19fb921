* An error raised while a CATCH ... WHEN filter runs is a run-time error of
* its own: reported at the filter's place with the dialog. Ignore makes the
* filter refuse, so the search goes on to the next clause.
TRY
  THROW 42
CATCH TO e WHEN e.errorno = 2071
  ? "first clause"
CATCH TO e
  ? "second clause:", e.uservalue
ENDTRY
? "after ENDTRY"
TRY
  TRY
    ERROR 12
  CATCH TO e WHEN e.nosuch
    ? "never"
  ENDTRY
CATCH TO outer
  ? "outer catches the filter's own error:", outer.errorno
ENDTRY
? "end"
