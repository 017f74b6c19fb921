* Each name a macro creates at program level keeps an undo entry; the undo
* stack holds 8,192 of them. Past that the assignment fails with 103, which
* a TRY catches, and the program goes on with what it made.
TRY
  FOR i = 0 TO 8999
    n = "v" + chr(65 + i % 26) + chr(65 + int(i / 26) % 26) + chr(65 + int(i / 676))
    &n = i
  NEXT
CATCH TO e
  ? e.errorno, i > 8000
ENDTRY
? vAAA, vZAA
? "after"
