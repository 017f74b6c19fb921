* Compile errors of text compiled at run time (evaluate, macros, a program
* loaded by DO) that a TRY catches show no report; one that nothing catches
* shows the report with the run-time error.
TRY
  ? evaluate("1 +")
CATCH TO e
  ? "evaluate caught:", e.errorno
ENDTRY
line = "? 1 +"
TRY
  &line
CATCH TO e
  ? "macro caught:", e.errorno
ENDTRY
SET PATH TO broken_lib
TRY
  DO broken
CATCH TO e
  ? "DO caught:", e.errorno
ENDTRY
? evaluate("2 *")
? "not reached"
