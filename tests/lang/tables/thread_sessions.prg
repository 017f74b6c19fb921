* Sessions made here and released by other threads: each thread drops the
* sessions it was handed (closing a cursor in some of them) while this
* program makes, selects and drops sessions of its own. A session whose
* last reference went is no longer there to select.
LOCAL aDroppers[4], aIds[4], i, j, k, oSession
FOR i = 1 TO 4
   aDroppers[i] = CREATEOBJECT("Dropper")
   FOR j = 1 TO 50
      oSession = CREATEOBJECT("Session")
      IF j % 10 = 0
         SET DATASESSION TO oSession.DataSessionId
         CREATE CURSOR held (n N(4))
         APPEND BLANK
         SET DATASESSION TO 1
      ENDIF
      aDroppers[i].oHeld.Add(oSession)
   ENDFOR
   aIds[i] = oSession.DataSessionId
ENDFOR
oSession = .NULL.
FOR i = 1 TO 4
   aDroppers[i].Start()
ENDFOR
lnSelected = 0
FOR k = 1 TO 300
   oSession = CREATEOBJECT("Session")
   SET DATASESSION TO oSession.DataSessionId
   lnSelected = lnSelected + IIF(SET("DATASESSION") = oSession.DataSessionId, 1, 0)
   SET DATASESSION TO 1
   oSession = .NULL.
ENDFOR
FOR i = 1 TO 4
   aDroppers[i].Join()
ENDFOR
? "selected here:", lnSelected
FOR i = 1 TO 4
   ? "dropper", i, "left:", aDroppers[i].oHeld.Count
   TRY
      SET DATASESSION TO aIds[i]
   CATCH TO e
      ? "  its last session:", e.ErrorNo
   ENDTRY
ENDFOR
? "session now:", SET("DATASESSION")

DEFINE CLASS Dropper AS Thread
   oHeld = .NULL.
   PROCEDURE Init
      This.oHeld = CREATEOBJECT("Collection")
   ENDPROC
   PROCEDURE Run
      DO WHILE This.oHeld.Count > 0
         This.oHeld.Remove(1)
      ENDDO
   ENDPROC
ENDDEFINE
