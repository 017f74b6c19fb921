* afields() and the cursor properties: buffering decides when a changed
* record reaches the file.
CREATE TABLE shape (id I AUTOINC NEXTVALUE 10 STEP 5, name C(12), code C(3) NOCPTRANS, price N(9,2) NULL, note M)
n = afields(info)
? "fields:", n
FOR k = 1 TO n
  ? info[k, 1], info[k, 2], info[k, 3], info[k, 4], info[k, 5], info[k, 6], info[k, 17], info[k, 18]
NEXT
? "empty rules:", "[" + info[1, 7] + "]", "[" + info[1, 16] + "]"
? "cursor properties:", cursorgetprop("Buffering"), cursorgetprop("SourceName"), cursorgetprop("SourceType")
? "last update known:", !EMPTY(lupdate())
TRY
  ? cursorgetprop("NoSuchProperty")
CATCH TO e
  ? "unknown property:", e.errorno
ENDTRY
TRY
  = cursorsetprop("Buffering", 5)
CATCH TO e
  ? "table buffering:", e.errorno, e.message
ENDTRY
* With row buffering a change waits in the record until the cursor leaves it.
USE
SET EXCLUSIVE OFF
USE shape
APPEND BLANK
APPEND BLANK
USE shape AGAIN ALIAS peek IN 0
? "set:", cursorsetprop("Buffering", 3), cursorgetprop("Buffering")
GO TOP
REPLACE name WITH "pending"
GO 1 IN peek
? "before leaving:", "[" + ALLTRIM(peek.name) + "]"
SKIP
GO 1 IN peek
? "after leaving:", "[" + ALLTRIM(peek.name) + "]"
REPLACE name WITH "closing"
USE
GO 2 IN peek
? "after closing:", "[" + ALLTRIM(peek.name) + "]"
* Without buffering the write is there at once.
SELECT peek
REPLACE name WITH "direct"
USE shape AGAIN ALIAS look IN 0
GO 2 IN look
? "unbuffered:", "[" + ALLTRIM(look.name) + "]"
SELECT 0
? "no table:", afields(none)
TRY
  ? cursorgetprop("Buffering")
CATCH TO e
  ? e.errorno
ENDTRY
