* REPLACE of every field type, the values read back as they went in; null
* where the field allows it and error 1581 where it does not; the errors of
* values that do not fit.
CREATE TABLE every (c C(5), v V(6), q Q(4), n N(8,2), f F(6,1), i I, b B(3), y Y, d D, t T, l L, m M, w W, nn N(4) NULL)
* Opened again shared, so that a second work area can open it too.
USE
SET EXCLUSIVE OFF
USE every
APPEND BLANK
REPLACE c WITH "abc"
REPLACE v WITH "var"
REPLACE q WITH "bin"
REPLACE n WITH 1234.567
REPLACE f WITH -2.5
REPLACE i WITH -2147483648
REPLACE b WITH 3.25
REPLACE y WITH $12.3456
REPLACE d WITH {^2024-02-29}
REPLACE t WITH {^2024-02-29 23:59:58}
REPLACE l WITH .T.
REPLACE m WITH "a memo that is longer than the record"
REPLACE w WITH "blob"
REPLACE nn WITH 7
? "[" + c + "]", "[" + v + "]", "[" + q + "]"
? n, f, i, b, y
? d = {^2024-02-29}, t = {^2024-02-29 23:59:58}, l, m, w, nn
? vartype(c), vartype(v), vartype(n), vartype(i), vartype(b), vartype(y), vartype(d), vartype(t), vartype(l), vartype(m)
* Another work area sees what was committed.
USE every AGAIN ALIAS again IN 0
? "seen elsewhere:", again.n, again.m
* Text longer than the field is cut to it.
REPLACE c WITH "abcdefgh"
REPLACE v WITH "12345678"
? "cut:", "[" + c + "]", "[" + v + "]"
* Null: allowed in nn, refused elsewhere.
REPLACE nn WITH NULL
? "null:", isnull(nn), nn
TRY
  REPLACE n WITH NULL
CATCH TO e
  ? e.errorno, e.message
ENDTRY
? "n unchanged:", n
* Values that do not fit the field: a number gives up its decimals first.
REPLACE n WITH 1234567
? "no room for decimals:", n
TRY
  REPLACE n WITH 123456789
CATCH TO e
  ? e.errorno, e.message
ENDTRY
TRY
  REPLACE d WITH "not a date"
CATCH TO e
  ? e.errorno, e.message
ENDTRY
TRY
  REPLACE l WITH 1
CATCH TO e
  ? e.errorno, e.message
ENDTRY
DIMENSION list(2)
TRY
  REPLACE c WITH list
CATCH TO e
  ? e.errorno, e.message
ENDTRY
TRY
  REPLACE nosuch WITH 1
CATCH TO e
  ? e.errorno, e.message
ENDTRY
* Numbers convert between the numeric types.
REPLACE i WITH 42.0
REPLACE n WITH 5
REPLACE y WITH 2.5
? "converted:", i, n, y
* alias.field, alias->field and IN name another work area.
SELECT 0
REPLACE every.c WITH "dot"
REPLACE every->v WITH "arrow"
REPLACE f WITH 9.5 IN every
? "from elsewhere:", every.c, every.v, every.f, alias()
TRY
  REPLACE c WITH "x"
CATCH TO e
  ? "no table here:", e.errorno
ENDTRY
* An autoincrement field is written by the table only.
CREATE TABLE counted (id I AUTOINC, name C(3))
APPEND BLANK
APPEND BLANK
? "ids:", id, reccount()
TRY
  REPLACE id WITH 99
CATCH TO e
  ? e.errorno, e.message
ENDTRY
