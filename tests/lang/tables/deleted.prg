* Deleted records: DELETE and RECALL mark the current record; with SET
* DELETED ON every move passes over them, runs of them included.
CREATE TABLE del (n N(3))
FOR i = 1 TO 8
  APPEND BLANK
  REPLACE n WITH i
NEXT
* Delete 1, 3, 4, 5 and 8: a run at the start, one in the middle, one at the end.
FOR i = 1 TO 8
  GO i
  IF INLIST(i, 1, 3, 4, 5, 8)
    DELETE
  ENDIF
NEXT
GO 3
? "deleted 3:", deleted()
GO 2
? "deleted 2:", deleted()
SET DELETED ON
GO TOP
? "top:", recno()
SKIP
? "next:", recno()
SKIP
? "after the run:", recno()
SKIP
? "end:", recno(), eof()
GO BOTTOM
? "bottom:", recno()
SKIP -1
? "back:", recno()
SKIP -1
? "back over the run:", recno()
SKIP -1
? "before the first:", recno(), bof()
* GO reaches a deleted record all the same.
GO 4
? "go 4:", recno(), deleted()
RECALL
? "recalled:", deleted()
GO TOP
SKIP 2
? "skip 2 with 4 back:", recno()
SET DELETED OFF
GO TOP
? "deleted off:", recno(), deleted()
* With every record deleted the table looks empty.
SET DELETED ON
GO TOP
DO WHILE !eof()
  DELETE
  SKIP
ENDDO
GO TOP
? "all deleted:", eof(), recno()
GO BOTTOM
? "bottom of all deleted:", bof()
* DELETE at the end of the file marks nothing.
SET DELETED OFF
GO BOTTOM
SKIP
DELETE
? "delete at eof:", deleted(), reccount()
