* Each thread runs with data sessions of its own: a Thread subclass whose
* Run creates and appends to its own table while the main program keeps its
* work area; the tables close when Run ends, so the joined tables open here.
LOCAL aWriters[3], i
CREATE CURSOR mine (tag C(4))
APPEND BLANK
REPLACE tag WITH "main"
FOR i = 1 TO 3
   aWriters[i] = CREATEOBJECT("Writer", "part" + STR(i, 1), i * 1000)
ENDFOR
FOR i = 1 TO 3
   aWriters[i].Start()
ENDFOR
FOR i = 1 TO 3
   aWriters[i].Join()
ENDFOR
? "main keeps its work area:", ALIAS(), tag, RECCOUNT()
FOR i = 1 TO 3
   ? aWriters[i].cTable, "saw alias", aWriters[i].cAlias, "in session", aWriters[i].nSession, ;
     "and", aWriters[i].nUsedBefore, "tables before"
   USE (aWriters[i].cTable) IN 0 SHARED
   SELECT (aWriters[i].cTable)
   nSum = 0
   SCAN
      nSum = nSum + n
   ENDSCAN
   ? "  records:", RECCOUNT(), "sum:", nSum
   USE
ENDFOR
* A second run of the same thread starts with no work area open.
aWriters[1].nCount = 10
aWriters[1].Start()
aWriters[1].Join()
USE part1 SHARED
? "after a second run:", RECCOUNT(), "records,", aWriters[1].nUsedBefore, "tables before"
USE

DEFINE CLASS Writer AS Thread
   cTable = ""
   nCount = 0
   cAlias = ""
   nSession = 0
   nUsedBefore = 0
   PROCEDURE Init(tcTable, tnCount)
      This.cTable = tcTable
      This.nCount = tnCount
   ENDPROC
   PROCEDURE Run
      LOCAL i
      This.nUsedBefore = IIF(USED("mine"), 1, 0) + IIF(USED(This.cTable), 1, 0)
      IF FILE(This.cTable + ".dbf")
         USE (This.cTable) EXCLUSIVE
      ELSE
         CREATE TABLE (This.cTable) (n N(6), label C(10))
      ENDIF
      This.cAlias = ALIAS()
      This.nSession = SET("DATASESSION")
      FOR i = 1 TO This.nCount
         APPEND BLANK
         REPLACE n WITH i
         REPLACE label WITH This.cTable
      ENDFOR
   ENDPROC
ENDDEFINE
