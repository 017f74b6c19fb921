* Sum of 1 .. 20,000,000 with bare variable names at program level.
nSum = 0
FOR i = 1 TO 20000000
   nSum = nSum + i
NEXT
? "result:", nSum
