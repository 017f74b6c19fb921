* Calls between user functions: errors, THROW and TRY across frames, each
* frame's variables ending with it, and the frames a call leaves behind
* serving the next calls at the same depth.
shared = "caller's"

* An error nothing in the callee catches reaches the caller's TRY; the
* PRIVATE the callee made hiding the caller's variable is gone.
TRY
   ? Fails(1)
CATCH TO e
   ? "caught in the caller:", e.errorno, "shared is", shared
ENDTRY

* Two frames up, and through a frame that catches only other values.
TRY
   ? Outer()
CATCH TO e
   ? "caught two frames up:", e.errorno, "shared is", shared
ENDTRY

* A TRY of the callee catches its own error and the callee returns.
? "handled inside:", Recovers(5)

* THROW of a value from a callee, caught by the caller.
TRY
   = Throws("thrown text")
CATCH TO e WHEN Accepts(e)
   ? "wrong filter"
CATCH TO e
   ? "thrown:", e.uservalue
ENDTRY

* A CATCH filter calling a function.
TRY
   = Fails(2)
CATCH TO e WHEN Accepts(e)
   ? "filter call accepted", e.errorno
ENDTRY

* Too many arguments: 94 before the frame is made; the stack is as it was.
TRY
   = Two(1, 2, 3)
CATCH TO e
   ? "too many:", e.errorno, Two(4, 5)
ENDTRY

* Frames left by errors at some depth serve later calls there.
FOR i = 1 TO 3
   TRY
      = Fails(i)
   CATCH
   ENDTRY
   ? "again", i, Nested(i)
NEXT

* PCOUNT() and PARAMETERS() in the callee and after the return.
? "counts:", Counted(1), Counted(1, 2), PCOUNT()
* PROGRAM() names the running function, and the caller's again after it.
? "program:", Named(), PROGRAM()
* RETURN from macro text in a callee returns from the callee.
? "macro return:", MacroReturn(3) + 1
* An argument by reference is written through.
LOCAL n
n = 1
= Bump(@n)
? "by reference:", n
* A callee called from native code (an expression evaluated by a built-in)
* handles its own errors too.
? "evaluated:", EVALUATE("Recovers(7)"), TYPE("Fails(3)")

FUNCTION Fails(n)
   PRIVATE shared
   shared = "callee's"
   RETURN n + "text"

FUNCTION Outer
   TRY
      RETURN Middle()
   CATCH TO e WHEN e.errorno = 12
      RETURN "wrong handler"
   ENDTRY

FUNCTION Middle
   PRIVATE shared
   shared = "middle's"
   RETURN Fails(9)

FUNCTION Recovers(n)
   LOCAL result
   TRY
      result = Fails(n)
   CATCH TO e
      result = n * 10
   ENDTRY
   RETURN result

FUNCTION Throws(value)
   THROW value
   RETURN "not reached"

FUNCTION Accepts(e)
   RETURN IIF(VARTYPE(e.errorno) = "N", e.errorno = 107, .F.)

FUNCTION Two(a, b)
   RETURN a + b

FUNCTION Nested(n)
   RETURN Two(n, Two(n, n))

FUNCTION Counted(a, b)
   RETURN STR(PCOUNT(), 1) + STR(PARAMETERS(), 1)

FUNCTION Named
   RETURN PROGRAM()

FUNCTION MacroReturn(n)
   LOCAL cmd
   cmd = "RETURN n * 2"
   &cmd
   RETURN 0

FUNCTION Bump(x)
   x = x + 41
   RETURN .T.
