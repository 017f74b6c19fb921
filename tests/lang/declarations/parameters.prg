* Parameters by value and by reference, PARAMETERS and LPARAMETERS.
v = 1
= add_to(@v, 41)
? "by reference:", v
v = 1
? "a copy of the parameter stays a value:", keep_copy(@v), v
w = 1
= add_to(w, 41)
? "by value:", w
? "lparameters:", lp(3, 4)
? "parameters:", pp(5)
? "fewer arguments:", fewer(1)
TRY
  ? onearg(1, 2)
CATCH TO e
  ? "too many:", e.errorno
ENDTRY

FUNCTION add_to(target, amount)
target = target + amount
RETURN .T.

FUNCTION keep_copy(p)
LOCAL q
q = p
p = 5
RETURN q

FUNCTION lp
LPARAMETERS a, b
RETURN a * b

FUNCTION pp
PARAMETERS a
RETURN a + 1

FUNCTION fewer(a, b)
RETURN vartype(b)

FUNCTION onearg(a)
RETURN a
