* A private made in a function's own frame is what its name means there
* until the frame ends: the next call of the same function, in the same
* place on the stack, starts again from the caller's variable; a frame of
* the same function deeper down that declares the name LOCAL has its own.
x = "program"
FOR k = 1 TO 3
   Twice(k)
NEXT
?
? Outer(1)
? "after:", x

FUNCTION Twice(k)
   ?? x, ""
   PRIVATE x
   x = "private of call " + str(k, 1)
   ?? x, ""
   x = x + "!"
   ?? x, ""
   RETURN k

FUNCTION Outer(nDepth)
   IF nDepth = 1
      PRIVATE x
      x = "private of 1"
   ELSE
      LOCAL x
      x = "local of 2"
   ENDIF
   ?? nDepth, x, ""
   IF nDepth = 1
      Outer(2)
      ?? "back", x, ""
      x = x + "?"
      ?? x
   ENDIF
   RETURN nDepth
