* Threads: a subclass of Thread gives Run, Start runs it on a stack and an
* operating-system thread of its own, Join waits for it.
LOCAL aWorkers[4], i
oShared = CREATEOBJECT("Tally")
oLog = CREATEOBJECT("Collection")
FOR i = 1 TO 4
   aWorkers[i] = CREATEOBJECT("Worker", i, oShared, oLog)
ENDFOR
FOR i = 1 TO 4
   aWorkers[i].Start()
ENDFOR
FOR i = 1 TO 4
   aWorkers[i].Join()
ENDFOR
* 4 threads of 100,000 calls each on the one object: every count is exact.
? "counts:", oShared.aCount[1], oShared.aCount[2], oShared.aCount[3], oShared.aCount[4]
? "total:", oShared.Total()
? "log entries:", oLog.Count
? "ids differ:", aWorkers[1].ThreadId <> aWorkers[2].ThreadId, aWorkers[1].ThreadId > 1
* Joining again does nothing; a thread may run again once it has ended.
aWorkers[1].Join()
aWorkers[1].Start()
aWorkers[1].Join()
? "after a second run:", oShared.aCount[1]
* An error in Run is reported and ends that thread only.
oBad = CREATEOBJECT("Faulty")
oBad.Start()
oBad.Join()
? "main goes on"

DEFINE CLASS Tally AS Custom
   DIMENSION aCount[4]
   PROCEDURE Init
      LOCAL i
      FOR i = 1 TO 4
         This.aCount[i] = 0
      ENDFOR
   ENDPROC
   PROCEDURE Bump(tnSlot)
      This.aCount[tnSlot] = This.aCount[tnSlot] + 1
   ENDPROC
   FUNCTION Total
      RETURN This.aCount[1] + This.aCount[2] + This.aCount[3] + This.aCount[4]
   ENDFUNC
ENDDEFINE

DEFINE CLASS Worker AS Thread
   nSlot = 0
   oTally = .NULL.
   oLog = .NULL.
   PROCEDURE Init(tnSlot, toTally, toLog)
      This.nSlot = tnSlot
      This.oTally = toTally
      This.oLog = toLog
   ENDPROC
   PROCEDURE Run
      LOCAL i
      FOR i = 1 TO 100000
         This.oTally.Bump(This.nSlot)
         IF i % 1000 = 0
            This.oLog.Add(This.nSlot)
         ENDIF
      ENDFOR
   ENDPROC
ENDDEFINE

DEFINE CLASS Faulty AS Thread
   PROCEDURE Run
      ERROR "thread trouble"
   ENDPROC
ENDDEFINE
