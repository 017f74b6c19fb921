* PROTECTED members answer to the methods of the object and of its
* subclasses; HIDDEN ones only to the methods of the class that declares
* them. From outside both look absent: 1734, like a member that isn't there.
o = CREATEOBJECT("Account", 100)
? o.Balance()
= Attempt("read protected", o, "o.nTotal")
= Attempt("write protected", o, "o.nTotal = 1")
= Attempt("read hidden", o, "o.cPin")
= Attempt("call protected", o, "o.Audit()")
= Attempt("call hidden", o, "o.Secret()")
= Attempt("missing", o, "o.nWhatever")
= Attempt("read-only", o, "o.Class = 'x'")
s = CREATEOBJECT("Savings", 50)
? s.Report()
= Attempt("hidden from a subclass", s, "s.PeekPin()")
= Attempt("hidden method from a subclass", s, "s.CallSecret()")
? s.Balance()

FUNCTION Attempt(tcWhat, o, tcCode)
   TRY
      &tcCode
      ? tcWhat, "allowed"
   CATCH TO e
      ? tcWhat, e.ErrorNo, e.Message
   ENDTRY
ENDFUNC

DEFINE CLASS Account AS Custom
   PROTECTED nTotal
   HIDDEN cPin
   nTotal = 0
   cPin = "1234"
   PROCEDURE Init(tnStart)
      This.nTotal = tnStart
   ENDPROC
   FUNCTION Balance
      RETURN This.nTotal + This.Secret()
   ENDFUNC
   PROTECTED FUNCTION Audit
      RETURN "audited " + This.cPin
   ENDFUNC
   HIDDEN FUNCTION Secret
      RETURN LEN(This.cPin)
   ENDFUNC
ENDDEFINE

DEFINE CLASS Savings AS Account
   FUNCTION Report
      This.nTotal = This.nTotal * 2
      RETURN This.Audit()
   ENDFUNC
   FUNCTION PeekPin
      RETURN This.cPin
   ENDFUNC
   FUNCTION CallSecret
      RETURN This.Secret()
   ENDFUNC
ENDDEFINE
