* Threads share an object whose properties hold an array and a text: each
* takes whole copies of the array and the text while the others and this
* program write them. Every copy is whole, and every thread's own element
* counts exactly.
LOCAL aWorkers[4], i, k, n
oBoard = CREATEOBJECT("Board")
FOR i = 1 TO 4
   aWorkers[i] = CREATEOBJECT("Marker", i, oBoard)
ENDFOR
FOR i = 1 TO 4
   aWorkers[i].Start()
ENDFOR
n = 0
FOR k = 1 TO 5000
   oBoard.aCells[5] = k
   oBoard.cLabel = "main " + TRANSFORM(k)
   n = n + ALEN(oBoard.aCells)
ENDFOR
FOR i = 1 TO 4
   aWorkers[i].Join()
ENDFOR
? "main saw lengths:", n, "cell 5:", oBoard.aCells[5]
FOR i = 1 TO 4
   ? "marker", i, "cell:", oBoard.aCells[i], "lengths:", aWorkers[i].nLengths, "labels read:", aWorkers[i].nLabels
ENDFOR

DEFINE CLASS Board AS Custom
   DIMENSION aCells[5]
   cLabel = ""
   PROCEDURE Init
      LOCAL i
      FOR i = 1 TO 5
         This.aCells[i] = 0
      ENDFOR
   ENDPROC
ENDDEFINE

DEFINE CLASS Marker AS Thread
   nSlot = 0
   oBoard = .NULL.
   nLengths = 0
   nLabels = 0
   PROCEDURE Init(tnSlot, toBoard)
      This.nSlot = tnSlot
      This.oBoard = toBoard
   ENDPROC
   PROCEDURE Run
      LOCAL k, lcLabel
      FOR k = 1 TO 5000
         This.oBoard.aCells[This.nSlot] = This.oBoard.aCells[This.nSlot] + 1
         This.nLengths = This.nLengths + ALEN(This.oBoard.aCells)
         lcLabel = This.oBoard.cLabel
         This.oBoard.cLabel = "marker " + TRANSFORM(This.nSlot) + " " + TRANSFORM(k)
         IF LEFT(lcLabel, 4) $ "main|mark" OR EMPTY(lcLabel)
            This.nLabels = This.nLabels + 1
         ENDIF
      ENDFOR
   ENDPROC
ENDDEFINE
