* An add or a product with a number constant on its right is one
* instruction; every type on its left gets what the operator gives it.
LOCAL aLeft[8], i, v
aLeft[1] = 9223372036854775807
aLeft[2] = 2.5
aLeft[3] = $1.25
aLeft[4] = {^2024-02-28}
aLeft[5] = .NULL.
aLeft[6] = "text"
aLeft[7] = -4611686018427387905
aLeft[8] = .T.
FOR i = 1 TO 8
   v = aLeft[i]
   ? i, Shown(v, 1), Shown(v, 2), Shown(v, 3), Shown(v, 4)
NEXT
n = 7
? "program level:", n + 1, n * 3, n + 0.5, n * 0.5

FUNCTION Shown(v, nForm)
   LOCAL r
   TRY
      DO CASE
      CASE nForm = 1
         r = v + 1
      CASE nForm = 2
         r = v * 2
      CASE nForm = 3
         r = v + 0.25
      OTHERWISE
         r = v * 1.5
      ENDCASE
   CATCH TO oErr
      RETURN "error " + transform(oErr.ErrorNo)
   ENDTRY
   RETURN vartype(r) + ":" + transform(r)
