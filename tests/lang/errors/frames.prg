* An undeclared assignment is a private of its frame: callees see it, and it
* is gone when the frame ends. The 129th nested frame is error 103.
= outer()
TRY
  ? made
CATCH TO e
  ? "gone after the frame:", e.errorno
ENDTRY
TRY
  = deep(1)
CATCH TO e
  ? "caught", e.errorno, "at depth", depth_reached
ENDTRY

FUNCTION outer
made = "in outer"
RETURN inner()

FUNCTION inner
? "inner sees:", made
RETURN .T.

FUNCTION deep(n)
PUBLIC depth_reached
depth_reached = n
RETURN deep(n + 1)
