* DO without IN: the running program's own procedure, else a file of that
* name, else the SET PROCEDURE modules, else error 1.
total = 21
TRY
  DO add_tax WITH total
CATCH TO e
  ? "before SET PROCEDURE:", e.errorno, e.message
ENDTRY
SET PATH TO procedure_lib
SET PROCEDURE TO reports
DO add_tax WITH total
? total
DO shadow
DO own
TRY
  DO nowhere
CATCH TO e
  ? "nowhere:", e.errorno, e.message
ENDTRY

PROCEDURE own
? "the program's own procedure"
