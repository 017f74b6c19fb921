* Threads and this program run the same member instructions at once on
* objects of different classes: whichever stack keeps the instructions'
* answers, every stack sees its own object's members.
LOCAL aWorkers[2], oMine, nSum, i
aWorkers[1] = CREATEOBJECT("Summer", CREATEOBJECT("Small"))
aWorkers[2] = CREATEOBJECT("Summer", CREATEOBJECT("Large"))
oMine = CREATEOBJECT("Computed")
FOR i = 1 TO 2
   aWorkers[i].Start()
ENDFOR
nSum = SumOf(oMine, 20000)
FOR i = 1 TO 2
   aWorkers[i].Join()
ENDFOR
? "main:", nSum
? "small:", aWorkers[1].nResult
? "large:", aWorkers[2].nResult

FUNCTION SumOf(toObject, tnRounds)
   LOCAL n, k
   n = 0
   FOR k = 1 TO tnRounds
      n = n + toObject.nValue + toObject.Step()
   ENDFOR
   RETURN n

DEFINE CLASS Small AS Custom
   nValue = 1
   PROCEDURE Step
      RETURN 1
   ENDPROC
ENDDEFINE

DEFINE CLASS Large AS Small
   nExtra = 0
   nValue = 1000
   PROCEDURE Step
      RETURN 1000
   ENDPROC
ENDDEFINE

DEFINE CLASS Computed AS Small
   PROCEDURE nValue_Access
      RETURN 3
   ENDPROC
ENDDEFINE

DEFINE CLASS Summer AS Thread
   oTarget = .NULL.
   nResult = 0
   PROCEDURE Init(toTarget)
      This.oTarget = toTarget
   ENDPROC
   PROCEDURE Run
      This.nResult = SumOf(This.oTarget, 20000)
   ENDPROC
ENDDEFINE
