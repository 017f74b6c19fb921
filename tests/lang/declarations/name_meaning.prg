* What a name means changes under the same instructions: every round of
* these loops runs the same code, and each must see the meaning of the moment.
x = "caller"
FOR k = 1 TO 2
   ? "before:", x
   Show()
   Hide()
   ? "after:", x
NEXT

* A macro makes a variable that the next line reads, in a fresh frame each time.
FOR k = 1 TO 2
   MacroMakes(k)
NEXT
TRY
   ? fresh
CATCH TO oErr
   ? "gone after return:", oErr.ErrorNo
ENDTRY

* PARAMETERS of a recursive procedure: each frame's n, back after each return.
Down(3)
?

* A LOCAL that has not run yet leaves the caller's variable visible.
shared = "caller's"
LateLocal()
? "caller keeps:", shared

* The same loop at program level and inside a function.
total = 0
FOR i = 1 TO 5
   total = total + i
NEXT
? "outside:", total, "inside:", LoopIn(), "recursive:", Depth(3)

* A name made PUBLIC in a callee stays; a RELEASEd frame gives its name back.
MakePublic()
? "public:", pub

PROCEDURE Show
   ? "shown:", x
ENDPROC

PROCEDURE Hide
   ? "callee sees:", x
   PRIVATE x
   x = "callee"
   ? "callee has:", x
   Show()
ENDPROC

PROCEDURE MacroMakes(n)
   cmd = "fresh = n * 10"
   &cmd
   ? "fresh:", fresh
ENDPROC

PROCEDURE Down
   PARAMETERS n
   IF n > 0
      Down(n - 1)
   ENDIF
   ?? n
ENDPROC

PROCEDURE LateLocal
   FOR k = 1 TO 2
      ? "round", k, "sees:", shared
      IF k = 1
         LOCAL shared
         shared = "local"
      ENDIF
   NEXT
ENDPROC

FUNCTION LoopIn
   LOCAL total, i
   total = 0
   FOR i = 1 TO 5
      total = total + i
   NEXT
   RETURN total

FUNCTION Depth(n)
   LOCAL v
   v = n
   IF n > 0
      v = v + Depth(n - 1)
   ENDIF
   RETURN v

PROCEDURE MakePublic
   PUBLIC pub
   pub = "made"
ENDPROC
