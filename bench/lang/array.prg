* Fill a 1,000,000-element array and sum it.
DIMENSION a[1000000]
FOR i = 1 TO 1000000
   a[i] = i * 2
NEXT
nSum = 0
FOR i = 1 TO 1000000
   nSum = nSum + a[i]
NEXT
? "result:", nSum
