* PRIVATE hides the caller's variable until the function returns; PUBLIC
* stays; LOCAL is seen by its own function only.
PRIVATE x
x = "caller"
= hide()
? "after hide:", x
PUBLIC g
g = "kept"
= change_public()
? "public:", g
= make_public()
? "made inside:", fresh
= redeclare_public()
= locals_are_own()
TRY
  ? secret
CATCH TO e
  ? "local not seen outside:", e.errorno
ENDTRY
= redefine()

FUNCTION hide
PRIVATE x
x = "inner"
? "inside hide:", x
= peek()
RETURN .T.

FUNCTION peek
? "peek sees:", x
RETURN .T.

FUNCTION change_public
g = "changed"
RETURN .T.

FUNCTION make_public
PUBLIC fresh
fresh = 42
RETURN .T.

FUNCTION redeclare_public
PUBLIC fresh
? "declared again, kept:", fresh
RETURN .T.

FUNCTION locals_are_own
LOCAL secret
secret = 1
RETURN .T.

FUNCTION redefine
PRIVATE y
y = 1
TRY
  LOCAL y
  ? "not reached"
CATCH TO e
  ? "local over private:", e.errorno
ENDTRY
RETURN .T.
