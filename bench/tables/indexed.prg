* Appends 1,000,000 records to a new table with two live tags, ID and
* UPPER(NAME), both updated by every append. Row buffering writes each
* record once, when the next APPEND BLANK leaves it.
CREATE TABLE ibench (id I, name C(20), amount N(12,2))
INDEX ON id TAG id
INDEX ON UPPER(name) TAG name
= cursorsetprop("Buffering", 3)
FOR i = 1 TO 1000000
   APPEND BLANK
   REPLACE id WITH i
   REPLACE name WITH "cust" + STR((i * 7919) % 1000003, 7)
   REPLACE amount WITH (i % 100000) / 100
NEXT
GO TOP
? "result:", reccount()
