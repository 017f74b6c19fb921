* Objects made and used while the program runs on one thread, then handed
* to threads: from then on every count and every reference stays exact.
LOCAL aWorkers[3], i, oTally, oKeep
oTally = CREATEOBJECT("Tally")
oKeep = CREATEOBJECT("Noisy", "kept")
FOR i = 1 TO 1000
   oTally.Bump(1)
   oTally.oHeld = oKeep
ENDFOR
oTally.AddProperty("nExtra", 0)
? "before the threads:", oTally.aCount[1], oTally.oHeld.cName
FOR i = 1 TO 3
   aWorkers[i] = CREATEOBJECT("Worker", i + 1, oTally)
ENDFOR
FOR i = 1 TO 3
   aWorkers[i].Start()
ENDFOR
* The main program goes on with the same object meanwhile.
FOR i = 1 TO 20000
   oTally.Bump(1)
   oTally.nExtra = oTally.nExtra + 1
ENDFOR
FOR i = 1 TO 3
   aWorkers[i].Join()
ENDFOR
? "counts:", oTally.aCount[1], oTally.aCount[2], oTally.aCount[3], oTally.aCount[4]
? "extra:", oTally.nExtra, "held:", oTally.oHeld.cName
* Every worker took and dropped references to the held object: it goes
* once, when the last of them goes.
oKeep = .NULL.
? "still held by the tally"
oTally.oHeld = .NULL.
? "done"

DEFINE CLASS Tally AS Custom
   DIMENSION aCount[4]
   oHeld = .NULL.
   PROCEDURE Init
      LOCAL i
      FOR i = 1 TO 4
         This.aCount[i] = 0
      ENDFOR
   ENDPROC
   PROCEDURE Bump(tnSlot)
      This.aCount[tnSlot] = This.aCount[tnSlot] + 1
   ENDPROC
ENDDEFINE

DEFINE CLASS Noisy AS Custom
   cName = ""
   PROCEDURE Init(tcName)
      This.cName = tcName
   ENDPROC
   PROCEDURE Destroy
      ? "destroyed:", This.cName
   ENDPROC
ENDDEFINE

DEFINE CLASS Worker AS Thread
   nSlot = 0
   oTally = .NULL.
   PROCEDURE Init(tnSlot, toTally)
      This.nSlot = tnSlot
      This.oTally = toTally
   ENDPROC
   PROCEDURE Run
      LOCAL i, loHeld
      FOR i = 1 TO 20000
         This.oTally.Bump(This.nSlot)
         loHeld = This.oTally.oHeld
      ENDFOR
   ENDPROC
ENDDEFINE
