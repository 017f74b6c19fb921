* TRY / CATCH / FINALLY.
TRY
  ERROR "boom"
CATCH TO e
  ? "caught:", error(), message()
FINALLY
  ? "finally after a handled error"
ENDTRY
x = "caller x"
TRY
  = level1()
CATCH TO e
  ? "three frames deep:", e.errorno, e.message
  ? "privates of the frames are gone:", x
ENDTRY
TRY
  ERROR 12
CATCH TO e WHEN e.errorno = 99
  ? "wrong clause"
CATCH TO e WHEN e.errorno = 12
  ? "second filter:", e.errorno
ENDTRY
TRY
  = thrower()
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
  TRY
    ERROR 1
  CATCH
    ? "inner catches first"
  ENDTRY
  ERROR 2
CATCH TO outer
  ? "after the inner region:", outer.errorno
ENDTRY
TRY
  ? "missing endtry is accepted"
CATCH
  ? "no"

FUNCTION thrower
THROW "my value"

FUNCTION level1
PRIVATE x
x = 1
RETURN level2()

FUNCTION level2
PRIVATE x
x = 2
RETURN level3()

FUNCTION level3
x = undefined_variable + 1
RETURN x
