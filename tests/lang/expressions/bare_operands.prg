* An operator reading bare names in place, and `x = x * a + b` updating the
* variable itself, give what the separate reads and operators give: the
* m. forms beside them are never folded.
a = 7.5
b = 2
? a / b, m.a / m.b, a * b, m.a * m.b, a + b, m.a + m.b
? 10 / b, 10 / m.b, vartype(10 / b), vartype(a / b)
* Quotients near and at whole numbers, huge, tiny, negative zero, infinity.
LOCAL aPairs[9, 2], i, p, q
aPairs[1, 1] = 0.3
aPairs[1, 2] = 0.1
aPairs[2, 1] = 6.0
aPairs[2, 2] = 3
aPairs[3, 1] = 10 ^ 20
aPairs[3, 2] = 3
aPairs[4, 1] = 10 ^ -300
aPairs[4, 2] = 7
aPairs[5, 1] = -0.0
aPairs[5, 2] = 5
aPairs[6, 1] = 2.5
aPairs[6, 2] = 0
aPairs[7, 1] = 4999999999999.5
aPairs[7, 2] = 0.5
aPairs[8, 1] = 12
aPairs[8, 2] = 4
aPairs[9, 1] = 1.0000000000000002
aPairs[9, 2] = 1
FOR i = 1 TO 9
   p = aPairs[i, 1]
   q = aPairs[i, 2]
   ? i, Shown(p / q), vartype(p / q), p / q == m.p / m.q, vartype(m.p / m.q)
NEXT
* Strings, dates, logicals and null take the general way, errors included.
s = "ab"
t = "cd"
? s + t, vartype(s + t)
d = {^2024-02-28}
? d + b, Tried("z = d * b"), Tried("z = s / b"), Tried("z = b / s"), Tried("z = d / b")
n = .NULL.
? a / n, n * b, a + n
* The integer product that overflows becomes a double as the operator makes it.
big = 4611686018427387904
two = 2
? big * two == m.big * m.two, vartype(big * two), big + big == m.big + m.big
* x = x * a + b: integers, numerics with their decimals, mixed constants.
k = 5
k = k * 10 + 7
? k, vartype(k)
k = big
k = k * 2 + 1
? k == m.big * 2 + 1, vartype(k)
r = 1.5
r = r * 1.25 + 0.5
w = 1.5
w = m.w * 1.25 + 0.5
? r, w, r == w, str(r, 10, 4)
k = 5
k = k * 1.5 + 1
? k, vartype(k)
s = "ab"
? Tried("s = s * 2 + 1"), s
n = .NULL.
n = n * 2 + 1
? n
d = {^2024-02-28}
? Tried("d = d * 2 + 1"), d
* The name must exist: the error names it on its own line.
? Tried("nosuch = nosuch * 2 + 1"), Tried("z = nosuch / b"), Tried("z = b / nosuch")
* A field of the current work area hides the variable in every form.
x = 100
y = 4
CREATE CURSOR hider (x N(6, 1), y N(4))
APPEND BLANK
REPLACE x WITH 5.5
REPLACE y WITH 2
? x / y, m.x / m.y, x * y, x + y
x = x * 2 + 1
? x, m.x
USE
? x, x / y
x = x * 2 + 1
? x
* A PRIVATE in a callee hides the caller's variable and is gone after return.
x = 3
? Hiding(), x
* A macro makes the variable that the next line updates.
cMake = "made = 4"
&cMake
made = made * 3 + 2
? made, made / b
* The same loop at program level and in a function.
x = 1
y = 0
FOR i = 1 TO 1000
   x = x * 1.0000001 + 0.5
   y = y + x / i
NEXT
? round(y, 6), Looped()
* An error ends the program at the name it is about.
z = b * 2
z = b / nosuch

FUNCTION Hiding
   PRIVATE x
   x = 10
   x = x * 2 + 1
   RETURN x / 3

FUNCTION Looped
   LOCAL x, y, i
   x = 1
   y = 0
   FOR i = 1 TO 1000
      x = x * 1.0000001 + 0.5
      y = y + x / i
   NEXT
   RETURN round(y, 6)

FUNCTION Shown(v)
   RETURN IIF(abs(v) > 10 ^ 300, IIF(v > 0, "+big", "-big"), transform(v))

FUNCTION Tried(cCode)
   TRY
      &cCode
   CATCH TO oErr
      RETURN "error " + transform(oErr.ErrorNo)
   ENDTRY
   RETURN "ok"
