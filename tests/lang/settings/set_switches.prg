* SET EXACT decides whether "=" compares a prefix; SET SPACE whether "?"
* separates its values; SET ASSERTS whether ASSERT lines are checked.
? "ABC" = "AB", "AB  " = "AB", "ABC" == "AB"
SET EXACT ON
? "ABC" = "AB", "AB  " = "AB", "ABC" == "AB"
SET EXACT OFF
SET SPACE OFF
? "a", "b"
SET SPACE ON
? "a", "b"
ASSERT 1 = 2
? "assert ignored"
SET ASSERTS ON
TRY
  ASSERT 1 = 2
CATCH TO e
  ? "assert failed:", e.errorno
ENDTRY
TRY
  SET STEP ON
CATCH TO e
  ? "no debugger:", e.errorno
ENDTRY
