* Binary tags: a bit per record, kept by appends and changes, never an order.
CREATE TABLE flags (name C(6), active L)
FOR k = 1 TO 5
  APPEND BLANK
  REPLACE name WITH "n" + STR(k, 1)
  REPLACE active WITH (k % 2 = 1)
NEXT
INDEX ON name TAG name
INDEX ON active TAG act BINARY
* The new binary tag leaves the order as it was.
? order(), tagno()
showtags()
TRY
  SET ORDER TO act
CATCH TO e
  ? e.errorno, e.message
ENDTRY
TRY
  ? seek(.T., "flags", 2)
CATCH TO e
  ? e.errorno
ENDTRY
? order()
* Appends and changes of the flag go on with the tag open.
APPEND BLANK
REPLACE name WITH "n6"
REPLACE active WITH .T.
GO 2
REPLACE active WITH .T.
REPLACE active WITH .F.
SET ORDER TO name
SEEK "n6"
? found(), recno(), active
on = 0
SCAN FOR active
  on = on + 1
ENDSCAN
? on, reccount()
* The tag survives closing, REINDEX, COPY TO WITH CDX and DELETE TAG.
USE
USE flags EXCLUSIVE
showtags()
REINDEX
showtags()
COPY TO copied WITH CDX
USE copied EXCLUSIVE
showtags()
USE flags EXCLUSIVE
DELETE TAG act
showtags()
* What a binary tag refuses.
TRY
  INDEX ON name TAG bad BINARY
CATCH TO e
  ? e.errorno, e.message
ENDTRY
TRY
  INDEX ON active TAG bad BINARY FOR name = "n1"
CATCH TO e
  ? e.errorno, e.message
ENDTRY
? ataginfo(info)

PROCEDURE showtags
  LOCAL n, k, line
  n = ataginfo(info)
  line = STR(n, 1) + ":"
  FOR k = 1 TO n
    line = line + " " + info[k, 1] + " " + info[k, 2] + " " + info[k, 3] + ";"
  NEXT
  ? line
ENDPROC
