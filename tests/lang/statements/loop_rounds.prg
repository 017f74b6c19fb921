* Integer FOR rounds go by the step's sign, at program level and in a
* function; an error after the loop went round reports its own line.
PRIVATE cText
cText = "a"
n = 0
FOR i = 10 TO 1 STEP -3
   n = n + i
NEXT
? "down:", n, i
n = 0
FOR i = 5 TO 5
   n = n + i
NEXT
? "once:", n, i
n = 0
FOR i = 6 TO 5
   n = n + i
NEXT
? "never:", n, i
n = 0
FOR i = 3 TO 5 STEP 0
   n = n + 1
   IF n = 4
      i = 5
   ENDIF
NEXT
? "step 0 ends on the limit:", n, i
? "in a function:", Down(), Up()
FOR i = 1 TO 3
   ? "round", i
   IF i = 2
      y = 1 + cText
   ENDIF
NEXT

FUNCTION Down
   LOCAL i, n
   n = 0
   FOR i = -1 TO -7 STEP -2
      n = n + i
   NEXT
   RETURN str(n) + str(i)

FUNCTION Up
   n = 0
   FOR i = -7 TO -1 STEP 2
      n = n + i
   NEXT
   RETURN str(n) + str(i)
