* The error dialog inside called functions: Ignore goes on with the callee's
* next statement and the callee returns as usual; Retry runs the callee's
* statement again; Abort prints every frame and ends the run.
? "returned:", Ignored(1)
? "retried:", Retried()
? "after the calls"
= Deep(3)
? "not reached"

FUNCTION Ignored(n)
   LOCAL x
   x = n + "a"
   RETURN "ignored in " + PROGRAM()

FUNCTION Retried
   ? "retrying"
   RETURN missing_name

FUNCTION Deep(n)
   IF n = 0
      RETURN n / "x"
   ENDIF
   RETURN Deep(n - 1)
