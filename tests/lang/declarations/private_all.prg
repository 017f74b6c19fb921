* PRIVATE ALL LIKE hides the caller's matching variables for the callee and
* everything it calls, and they come back when it returns; EXCEPT hides all
* others. In a pattern "*" is any run of characters and "." any one character.
abc = "caller abc"
axb = "caller axb"
other = "caller other"
= hide_like()
? abc, axb, other
= hide_except()
? abc, axb, other

FUNCTION hide_like
PRIVATE ALL LIKE a*.b
TRY
  ? axb
CATCH TO e
  ? "axb is hidden:", e.errorno
ENDTRY
? "still seen:", abc, other
axb = "callee axb"
abc = "callee abc"
RETURN .T.

FUNCTION hide_except
PRIVATE ALL EXCEPT o*
TRY
  ? abc
CATCH TO e
  ? "abc is hidden:", e.errorno
ENDTRY
? "still seen:", other
RETURN .T.
