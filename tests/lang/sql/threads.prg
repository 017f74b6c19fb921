* Two threads run statements on their own connections at the same time;
* each makes its cursors in its own data session. A handle may then serve
* another thread after the one that made it.
lcConnect = GETENV("ZOBASE_SQL_CONNECT")
LOCAL aWorkers[2], i
FOR i = 1 TO 2
  aWorkers[i] = CREATEOBJECT("SqlWorker", i, lcConnect)
ENDFOR
FOR i = 1 TO 2
  aWorkers[i].Start()
ENDFOR
FOR i = 1 TO 2
  aWorkers[i].Join()
ENDFOR
FOR i = 1 TO 2
  ? "worker", i, aWorkers[i].cResult
ENDFOR
? "main session sees no worker cursor:", USED("sqlresult")
* The handle the first worker made, used here after it ended.
h = aWorkers[1].nHandle
? "handle of a thread:", sqlexec(h, "select count(*) as n from rows1"), ALLTRIM(TRANSFORM(n))
oNext = CREATEOBJECT("HandleUser", h)
oNext.Start()
oNext.Join()
? "and in a third thread:", oNext.cResult
? sqldisconnect(h), sqldisconnect(aWorkers[2].nHandle)

DEFINE CLASS SqlWorker AS Thread
  nSlot = 0
  cConnect = ""
  nHandle = 0
  cResult = ""
  PROCEDURE Init(tnSlot, tcConnect)
    This.nSlot = tnSlot
    This.cConnect = IIF(EMPTY(tcConnect), "Driver=SQLite3;SyncPragma=OFF;Database=thread" + TRANSFORM(tnSlot) + ".db", tcConnect)
  ENDPROC
  PROCEDURE Run
    LOCAL h, i, lcTable, nOk, nSum, nIds
    lcTable = "rows" + TRANSFORM(This.nSlot)
    h = sqlstringconnect(This.cConnect)
    This.nHandle = h
    nOk = sqlexec(h, "create table " + lcTable + " (id integer, slot integer)")
    FOR i = 1 TO 200
      nOk = nOk + sqlexec(h, "insert into " + lcTable + " values (?i, ?This.nSlot)")
    ENDFOR
    nSum = 0
    FOR i = 1 TO 20
      nOk = nOk + sqlexec(h, "select id, slot from " + lcTable + " where id <= ?(i * 10)")
      nSum = nSum + RECCOUNT()
    ENDFOR
    nIds = 0
    SCAN
      nIds = nIds + id
    ENDSCAN
    This.cResult = TRANSFORM(nOk) + " calls ok, " + TRANSFORM(nSum) + " rows, last sum " + TRANSFORM(nIds) + ", slot " + TRANSFORM(This.SlotOfFirstRow())
  ENDPROC
  FUNCTION SlotOfFirstRow
    GO TOP
    RETURN slot
  ENDFUNC
ENDDEFINE

DEFINE CLASS HandleUser AS Thread
  nHandle = 0
  cResult = ""
  PROCEDURE Init(tnHandle)
    This.nHandle = tnHandle
  ENDPROC
  PROCEDURE Run
    = sqlexec(This.nHandle, "select max(id) as top from rows1")
    This.cResult = TRANSFORM(top)
  ENDPROC
ENDDEFINE
