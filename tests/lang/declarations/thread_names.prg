* Threads run the same functions as the program at the same time: names
* read and written by bare name (privates, a PRIVATE hiding the caller's
* variable, a macro making one, LOCALs) keep their meaning on every stack,
* whichever stack ran the instructions first.
LOCAL aWorkers[3], i
FOR i = 1 TO 3
   aWorkers[i] = CREATEOBJECT("Summer", i)
ENDFOR
FOR i = 1 TO 3
   aWorkers[i].Start()
ENDFOR
? "main:", Work(0)
FOR i = 1 TO 3
   aWorkers[i].Join()
ENDFOR
FOR i = 1 TO 3
   ? "thread", i, "->", aWorkers[i].cResult
ENDFOR

FUNCTION Work(nSeed)
   total = nSeed
   FOR k = 1 TO 20000
      total = total + k
   NEXT
   step = nSeed + 1
   FOR k = 1 TO 20000
      total = total + step
   NEXT
   RETURN transform(total) + " " + Hidden(nSeed) + " " + Made(nSeed) + " " + Locals(nSeed)

FUNCTION Hidden(nSeed)
   PRIVATE total
   total = nSeed * 100
   RETURN transform(total)

FUNCTION Made(nSeed)
   LOCAL cmd
   cmd = "made = nSeed * 7"
   &cmd
   RETURN transform(made)

FUNCTION Locals(nSeed)
   LOCAL s, j
   s = 0
   FOR j = 1 TO 20000
      s = s + nSeed
   NEXT
   RETURN transform(s)

DEFINE CLASS Summer AS Thread
   nSeed = 0
   cResult = ""
   PROCEDURE Init(tnSeed)
      This.nSeed = tnSeed
   ENDPROC
   PROCEDURE Run
      This.cResult = Work(This.nSeed)
   ENDPROC
ENDDEFINE
