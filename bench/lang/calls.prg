* 5,000,000 calls of a two-parameter function, inside a function.
? "result:", Main()

FUNCTION Main
   LOCAL nSum, i
   nSum = 0
   FOR i = 1 TO 5000000
      nSum = Add2(nSum, i)
   NEXT
   RETURN nSum

FUNCTION Add2(a, b)
   RETURN a + b
