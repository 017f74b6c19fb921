* Sizes out of range are errors, never an abort: array dimensions that
* cannot be held are 230, string sizes past 32 bits are 39.
try_dimension(1000000000000, 0)
try_dimension(9223372036854775807, 0)
try_dimension(100000, 100000)
try_dimension(4294967296, 4294967296)
try_dimension(0, 0)
try_dimension(1000, 3)

DIMENSION kept(3)
kept[2] = "still here"
TRY
  DIMENSION kept(1000000000000)
CATCH TO e
  ? e.errorno
ENDTRY
? alen(kept), kept[2]

TRY
  ? len(replicate("abc", 1000000000))
CATCH TO e
  ? e.errorno, e.message
ENDTRY
TRY
  ? len(replicate("ab", 9223372036854775807))
CATCH TO e
  ? e.errorno
ENDTRY
TRY
  ? len(space(9223372036854775807))
CATCH TO e
  ? e.errorno
ENDTRY
? len(replicate("ab", 50000)), len(space(-5))

PROCEDURE try_dimension(rows, columns)
TRY
  IF columns = 0
    DIMENSION arr(rows)
  ELSE
    DIMENSION arr(rows, columns)
  ENDIF
  ? "dimensioned", alen(arr)
CATCH TO e
  ? e.errorno, e.message
ENDTRY
ENDPROC
