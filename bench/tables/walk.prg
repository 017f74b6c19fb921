* A walk of the whole table of indexed.prg in UPPER(NAME) order, with a sum
* that depends on the order.
USE ibench
SET ORDER TO name
total = 0
k = 0
SCAN
   k = k + 1
   total = total + id * (k % 13)
ENDSCAN
? "result:", k, total
