* 1,000,000 reads of a table field by bare name inside SCAN: 10,000
* records, scanned 100 times.
CREATE CURSOR items (nval N(8), kind C(1))
FOR i = 1 TO 10000
   APPEND BLANK
   REPLACE nval WITH i % 97
NEXT
n = 0
FOR pass = 1 TO 100
   SCAN
      n = n + nval
   ENDSCAN
NEXT
? "result:", n
