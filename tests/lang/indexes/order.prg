* Tags made with INDEX ON and kept right by every write: walking, SEEK,
* descending order, FOR conditions, and the tags found again on USE.
CREATE TABLE people (id I, name C(10), born D, score N(6,2))
FOR k = 1 TO 20
  APPEND BLANK
  REPLACE id WITH 21 - k
  REPLACE name WITH CHR(65 + (k * 7) % 26) + "name" + STR(k, 2)
  REPLACE born WITH DATE(2000, 1, 1) + k * 3
  REPLACE score WITH (k * 37) % 11 - 5
NEXT
INDEX ON id TAG id
? order(), tagno(), descending()
GO TOP
? recno(), id
SKIP
? recno(), id
INDEX ON UPPER(name) TAG name
GO TOP
SCAN
  ?? name, " "
ENDSCAN
?
SET ORDER TO id
SEEK 5
? found(), recno(), id, eof()
SEEK 99
? found(), eof()
SET ORDER TO name
SEEK "H"
? found(), name
SET ORDER TO id DESCENDING
GO TOP
? id
SKIP
? id
* A descending walk ends at the end of the file, as an ascending one does.
n = 0
SCAN
  n = n + 1
ENDSCAN
? n, eof(), bof()
INDEX ON score TAG score FOR score > 0
SCAN
  ?? score, " "
ENDSCAN
?
? ataginfo(a), a[3,3], a[3,4]
USE
USE people
? order()
SET ORDER TO score
GO TOP
? score
SET ORDER TO id
GO TOP
REPLACE id WITH 100
GO BOTTOM
? id
DELETE TAG score
? ataginfo(b)
