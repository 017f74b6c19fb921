* Numbers as text: str's width, decimals, rounding and stars; val reading
* the leading number; SET DECIMALS, POINT and SEPARATOR wherever a number
* becomes text.
? "[" + str(42) + "]", "[" + str(-42) + "]", "[" + str(3.14159, 8, 3) + "]", "[" + str(2.5) + "]", "[" + str(-2.5) + "]"
? "[" + str(1234.5678, 6, 2) + "]", "[" + str(9.96, 4, 1) + "]", "[" + str(99.96, 4, 1) + "]", "[" + str(123456, 5) + "]", "[" + str(-1234, 4) + "]"
? "[" + str(7, 6, 2) + "]", "[" + str($1234.5678, 10, 2) + "]", "[" + str(0 - $0.0004, 8, 2) + "]", "[" + str(-0.4) + "]", "[" + str(1/3, 20, 18) + "]"
? "[" + str(9223372036854775807, 19) + "]", str(.NULL.)
try_eval('str("12")')
try_eval("str(1, 0)")
try_eval("str(1, 5, -1)")
try_eval("str({^2026-01-02})")

? val("42"), val("  -12.50abc"), val("+7"), val(" .5"), val("1e3"), val("1.5E-3"), val("2e"), val("abc"), val(""), val(.NULL.)
? vartype(val("42")), vartype(val("4.2")), val("99999999999999999999"), val("1,234,567.5"), val("12,"), val("-,5")
number = 12
try_eval("val(number)")

* Numbers whose decimals are not known show SET DECIMALS of them.
? 10 / 3, 7 / 2, 1.25, 2 / 3 * 3, $1.5
SET DECIMALS TO 4
? 10 / 3, 7 / 2, 1.25, set("DECIMALS"), scale(10 / 3), scale(1.25), scale(5), scale($1)
SET DECIMALS TO 0
? 10 / 3, 7 / 2, 1.25
try_eval("setdecimals(-1)")
try_eval("setdecimals('2')")
SET DECIMALS TO 2

* A comma as the decimal point: in ?, str, text merge and val alike.
SET POINT TO ","
x = 1.25
? x, 10 / 4, $2.5, str(3.14159, 6, 2), val("3,75"), val("1.234,5"), set("POINT")
TEXT TO merged TEXTMERGE NOSHOW
x is <<x>>
ENDTEXT
? merged
SET SEPARATOR TO "."
? val("1.234.567,89"), transform(1234567, "9,999,999"), set("SEPARATOR")
SET POINT TO "."
SET SEPARATOR TO ","
try_eval('setseparator("5")')
try_eval('setpoint("")')

* transform: integers fill the "9" and "#" places; any other value, or no
* picture, is its text as ? shows it.
? "[" + transform(5, "@L 999") + "]", "[" + transform(-5, "999") + "]", "[" + transform(12345, "99") + "]", "[" + transform(-5, "@L 999") + "]"
? "[" + transform(-123, "999") + "]", "[" + transform(0, "###") + "]", "[" + transform(42, "99.99") + "]", "[" + transform(1234567, "9,999,999") + "]", "[" + transform(5, "9,999") + "]"
? "[" + transform(7, "Item #99") + "]", "[" + transform(1.5, "999") + "]", "[" + transform($12.5, "999") + "]", "[" + transform(.T., "999") + "]"
? "[" + transform({^2026-01-02}, "999") + "]", "[" + transform("abc", "999") + "]", "[" + transform(10 / 4) + "]", "[" + transform(.NULL.) + "]", "[" + transform(5, .NULL.) + "]"
SET DATE GERMAN
? transform({^2026-01-02}), transform({^2026-01-02 10:11:12})
SET DATE AMERICAN
try_eval('transform(5, "@Z 999")')
try_eval('transform(5, "999999999999999999999")')

PROCEDURE setdecimals(n)
  SET DECIMALS TO n

PROCEDURE setseparator(c)
  SET SEPARATOR TO c

PROCEDURE setpoint(c)
  SET POINT TO c

PROCEDURE try_eval(text)
  TRY
    ? text, "gave", evaluate(text)
  CATCH TO e
    ? text, "is error", e.errorno
  ENDTRY
