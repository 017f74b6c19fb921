* Threads calling declared functions at once: each crash in a callee is
* error 2027 on the thread that made it, however the calls of the other
* threads begin and end around it, and the program goes on.
LOCAL aCallers[4], i
FOR i = 1 TO 4
   aCallers[i] = CREATEOBJECT("Caller", i)
ENDFOR
FOR i = 1 TO 4
   aCallers[i].Start()
ENDFOR
FOR i = 1 TO 4
   aCallers[i].Join()
ENDFOR
FOR i = 1 TO 4
   ? "caller", i, "crashes caught:", aCallers[i].nCaught, "lengths:", aCallers[i].nLength
ENDFOR
DECLARE INTEGER zoex_crash IN (GETENV("ZOBASE_EXAMPLE_EXTENSION")) INTEGER nowhere
TRY
   ? zoex_crash(0)
CATCH TO e
   ? "main:", e.ErrorNo
ENDTRY

DEFINE CLASS Caller AS Thread
   nSlot = 0
   nCaught = 0
   nLength = 0
   PROCEDURE Init(tnSlot)
      This.nSlot = tnSlot
   ENDPROC
   PROCEDURE Run
      LOCAL i
      DECLARE INTEGER zoex_crash IN (GETENV("ZOBASE_EXAMPLE_EXTENSION")) INTEGER nowhere
      DECLARE INTEGER strlen IN libc.so.6 STRING text
      FOR i = 1 TO 300
         TRY
            = zoex_crash(0)
         CATCH TO e
            IF e.ErrorNo = 2027
               This.nCaught = This.nCaught + 1
            ENDIF
         ENDTRY
         This.nLength = This.nLength + strlen(REPLICATE("x", This.nSlot))
      ENDFOR
   ENDPROC
ENDDEFINE
