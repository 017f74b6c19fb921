* seek(), tag() and key(): SEEK as a function and the tags by number.
CREATE TABLE people (name C(8), age N(3))
FOR k = 1 TO 5
  APPEND BLANK
  REPLACE name WITH "p" + STR(k, 1)
  REPLACE age WITH 60 - 10 * k
NEXT
INDEX ON UPPER(name) TAG name
INDEX ON age TAG age DESCENDING
? tag(), key()
? tag(1), key(1), tag(2), key(2)
? "[" + tag(3) + "]", "[" + key(3) + "]"
? tag("people.cdx", 1), tag("PEOPLE", 2), "[" + tag("other.cdx", 1) + "]"
? tag(1, "people"), key(2, 1)
* seek() in the order, and its effect on found() and eof().
? seek(30), recno(), found()
? seek(31), eof(), found()
* Through another tag: the order stays and stands on the record found.
? seek("P4", "people", "name"), recno(), order()
SKIP
? recno(), age
? seek("P2", 1, 1), recno(), order()
* The scope of the order survives a look through another tag.
SET KEY TO RANGE 20, 40
? seek("P5", "people", "name"), order()
GO TOP
? "top in scope:", age
TRY
  ? seek("x", "people", "nosuchtag")
CATCH TO e
  ? e.errorno
ENDTRY
? order()
SET ORDER TO
TRY
  ? seek(1)
CATCH TO e
  ? e.errorno
ENDTRY
? "[" + tag() + "]", "[" + key() + "]"
USE
? "[" + tag(1) + "]"
