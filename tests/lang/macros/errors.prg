* A macro whose text fails to compile raises the first error's number.
bad = "x = = 1"
TRY
  &bad
CATCH TO e
  ? "caught:", e.errorno
ENDTRY
TRY
  ? evaluate("1 +")
CATCH TO e
  ? "evaluate caught:", e.errorno
ENDTRY
notext = 5
TRY
  &notext
CATCH TO e
  ? "not a string:", e.errorno
ENDTRY
? "goes on"
