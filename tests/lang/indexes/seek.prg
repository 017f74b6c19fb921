* SEEK with SET EXACT and SET NEAR, and over deleted records.
CREATE TABLE words (w C(8), n I)
list = "pear apple plum apricot fig peach"
FOR k = 1 TO 6
  APPEND BLANK
  REPLACE w WITH GETWORDNUM(list, k)
  REPLACE n WITH k
NEXT
INDEX ON w TAG w
SEEK "ap"
? found(), w
SET EXACT ON
SEEK "ap"
? found(), eof()
SEEK "apple"
? found(), w
SET EXACT OFF
SEEK "b"
? found(), eof(), recno()
SET NEAR ON
SEEK "b"
? found(), eof(), w
SEEK "zz"
? found(), eof()
SET NEAR OFF
* A deleted record is passed over under SET DELETED.
SEEK "pe"
? w
DELETE
SET DELETED ON
SEEK "pe"
? found(), w
SEEK "pea"
? found(), w
SET DELETED OFF
* Numbers seek a numeric tag whatever their kind.
INDEX ON n TAG n
SEEK 4
? found(), w
SEEK 4.0
? found(), w
TRY
  SEEK "x"
CATCH TO e
  ? e.errorno
ENDTRY
SET ORDER TO
TRY
  SEEK 1
CATCH TO e
  ? e.errorno, e.message
ENDTRY
