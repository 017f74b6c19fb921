* Appends 1,000,000 records of C(30), N(12,2), D and N(10) to a new table
* without an index, one APPEND BLANK and four REPLACE each.
CREATE TABLE bench (name C(30), amount N(12,2), day D, n N(10))
start = {^2020-01-01}
FOR i = 1 TO 1000000
   APPEND BLANK
   REPLACE name WITH "customer"
   REPLACE amount WITH (i % 100000) / 100
   REPLACE day WITH start + i % 3650
   REPLACE n WITH i
NEXT
? "result:", reccount()
