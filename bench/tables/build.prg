* The records of indexed.prg appended with no index, then both tags built
* by INDEX ON.
CREATE TABLE bbench (id I, name C(20), amount N(12,2))
= cursorsetprop("Buffering", 3)
FOR i = 1 TO 1000000
   APPEND BLANK
   REPLACE id WITH i
   REPLACE name WITH "cust" + STR((i * 7919) % 1000003, 7)
   REPLACE amount WITH (i % 100000) / 100
NEXT
GO TOP
INDEX ON id TAG id
INDEX ON UPPER(name) TAG name
? "result:", reccount()
