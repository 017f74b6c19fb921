* WITH ... ENDWITH reads and writes members through the leading dot;
* ASSERT checks only when asserts are on (this test runs with --assert).
TRY
  ERROR "inside"
CATCH TO e
  WITH e
    ? .errorno, .message
    .uservalue = "set through WITH"
  ENDWITH
  ? e.uservalue
ENDTRY
ASSERT 1 = 1
TRY
  ASSERT 1 = 2
CATCH TO failed
  ? "assert raised", failed.errorno
ENDTRY
? "done"
