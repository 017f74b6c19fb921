* 1,000,000 moves to records picked by a linear congruential generator,
* reading one field of each.
USE bench
total = 0
r = 12345
FOR i = 1 TO 1000000
   r = (r * 1103515245 + 12345) % 2147483648
   GO r % 1000000 + 1
   total = total + n
NEXT
? "result:", total
