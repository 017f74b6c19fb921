* The integer FOR round and the number add of two bare names take short
* paths; whatever they cannot do goes the general way with the same result:
* a step past the largest integer gives a double, a body that makes the
* variable a number with decimals or text, a privates' loop at program level.
? "locals past the integers:", PastTheIntegers()
? "privates past the integers:", PrivatesPast()
? "body makes it fractional:", Fractional()
? "body makes it text:", MadeText()
? "sum crosses the integers:", SumCrosses()
? "text sums:", TextSums()
n = 0
FOR i = 1 TO 10 STEP 3
   n = n + i
NEXT
? "program level:", n, i

FUNCTION PastTheIntegers
   LOCAL i, n
   n = 0
   FOR i = 4611686018427387904 TO 12000000000000000000.0 STEP 4611686018427387904
      n = n + 1
   NEXT
   RETURN str(n) + " " + vartype(i) + " " + transform(i > 12000000000000000000.0)

FUNCTION PrivatesPast
   n = 0
   FOR i = 4611686018427387904 TO 12000000000000000000.0 STEP 4611686018427387904
      n = n + 1
   NEXT
   RETURN str(n) + " " + vartype(i)

FUNCTION Fractional
   LOCAL i, n
   n = 0
   FOR i = 1 TO 5
      n = n + 1
      IF i = 2
         i = 2.5
      ENDIF
   NEXT
   RETURN str(n) + str(i, 5, 1)

FUNCTION MadeText
   LOCAL i
   TRY
      FOR i = 1 TO 5
         i = "x"
      NEXT
   CATCH TO oErr
      RETURN "error " + transform(oErr.ErrorNo) + " " + i
   ENDTRY
   RETURN "no error"

FUNCTION SumCrosses
   LOCAL s, k
   s = 9223372036854775800
   k = 5
   s = s + k
   s = s + k
   RETURN vartype(s) + " " + transform(s > 9200000000000000000.0)

FUNCTION TextSums
   LOCAL s, k
   s = "a"
   k = "b"
   s = s + k
   s = s + k
   RETURN s
