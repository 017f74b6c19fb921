* 1,000,000 macro evaluations of a short expression.
cExpr = "n + i % 7"
n = 0
FOR i = 1 TO 1000000
   n = &cExpr
NEXT
? "result:", n
