* 1,000,000 SEEKs of IDs picked by a linear congruential generator in the
* table of indexed.prg, reading one field of each.
USE ibench
SET ORDER TO id
total = 0
r = 12345
FOR i = 1 TO 1000000
   r = (r * 1103515245 + 12345) % 2147483648
   SEEK r % 1000000 + 1
   total = total + amount
NEXT
? "result:", total
