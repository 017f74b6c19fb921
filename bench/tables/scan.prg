* A natural-order scan of the table of append.prg, summing the amounts of
* the records where a date and an amount condition hold.
USE bench
total = 0
since = {^2022-01-01}
SCAN FOR day >= since AND amount > 500
   total = total + amount
ENDSCAN
? "result:", total
