* A table's key expressions read its own fields while another work area is
* current, also when that area has a field of the same name; in file order
* and without tags, moves and writes give the same answers.
CREATE TABLE keyed (name C(10))
INDEX ON name TAG name
SELECT 0
CREATE TABLE other (name C(10))
APPEND BLANK
REPLACE name WITH "alpha"
SELECT keyed
APPEND BLANK
REPLACE name WITH "zeta"
SELECT other
REPLACE name WITH "beta" IN keyed
SELECT keyed
SEEK "beta"
? found(), recno(), name
SEEK "alpha"
? found()
SELECT other
n = 0
FOR i = 1 TO 5
   APPEND BLANK
   REPLACE name WITH "n" + ltrim(str(i))
   n = n + i
NEXT
GO 3
? n, recno(), name, reccount()
SELECT keyed
SET ORDER TO
GO 1
? name, reccount()
