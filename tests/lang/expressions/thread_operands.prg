* Threads run the operators that read bare names themselves and the
* in-place x = x * a + b at the same time as the program: each stack gets
* its own variables' values.
LOCAL aWorkers[3], i
FOR i = 1 TO 3
   aWorkers[i] = CREATEOBJECT("Scaler", i)
ENDFOR
FOR i = 1 TO 3
   aWorkers[i].Start()
ENDFOR
? "main:", Scaled(4)
FOR i = 1 TO 3
   aWorkers[i].Join()
ENDFOR
FOR i = 1 TO 3
   ? "thread", i, "->", aWorkers[i].cResult
ENDFOR

FUNCTION Scaled(nSeed)
   PRIVATE x, y, k, n
   x = nSeed
   y = 0
   n = nSeed + 1
   FOR k = 1 TO 20000
      x = x * 1.5 + 0.5
      x = x / 1.5
      y = y + x / k
      n = n * 3 + 1
      n = n % 1000
   NEXT
   RETURN str(x, 12, 4) + str(y, 14, 4) + str(n, 5) + str(k * n / nSeed + x * k, 14, 2)

DEFINE CLASS Scaler AS Thread
   nSeed = 0
   cResult = ""
   PROCEDURE Init(tnSeed)
      This.nSeed = tnSeed
   ENDPROC
   PROCEDURE Run
      This.cResult = Scaled(This.nSeed)
   ENDPROC
ENDDEFINE
