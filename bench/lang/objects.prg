* 5,000,000 method calls and 5,000,000 property reads on a user object.
? "result:", Main()

FUNCTION Main
   LOCAL o, i, n
   o = CREATEOBJECT("Counter")
   FOR i = 1 TO 5000000
      o.Add(i)
   NEXT
   n = 0
   FOR i = 1 TO 5000000
      n = n + o.nStep
   NEXT
   RETURN o.nTotal + n

DEFINE CLASS Counter AS Custom
   nTotal = 0
   nStep = 2
   PROCEDURE Add(tnValue)
      This.nTotal = This.nTotal + tnValue
   ENDPROC
ENDDEFINE
