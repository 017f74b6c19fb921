* TRY / CATCH / FINALLY.
TRY
  ERROR "boom"
CATCH TO e
  ? "caught:", error(), message()
FINALLY
  ? "finally after a handled error"
ENDTRY
TRY
  = level1()
CATCH TO e
  ? "three frames deep:", e.errorno, e.message
ENDTRY
TRY
  ERROR 12
CATCH TO e WHEN e.errorno = 99
  ? "wrong clause"
CATCH TO e WHEN e.errorno = 12
  ? "second filter:", e.errorno
ENDTRY
TRY
  THROW "my value"
CATCH TO e
  ? "thrown:", e.uservalue
ENDTRY
TRY
  ? "no error"
FINALLY
  ? "finally without catch"
ENDTRY
TRY
  TRY
    ERROR 1098
  CATCH TO inner WHEN .F.
    ? "filtered out"
  ENDTRY
CATCH TO outer
  ? "outer try:", outer.errorno
ENDTRY
TRY
  ? "missing endtry is accepted"
CATCH
  ? "no"

FUNCTION level1
RETURN level2()

FUNCTION level2
RETURN level3()

FUNCTION level3
x = undefined_variable + 1
RETURN x
