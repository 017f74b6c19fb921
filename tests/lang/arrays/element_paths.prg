* Reading and writing one element: copies stay apart, a by-reference array
* is written through, bad subscripts raise their errors, and values that own
* storage (text, arrays) move in and out intact.
DIMENSION a[4]
FOR i = 1 TO 4
   a[i] = i * 2
NEXT
b = a
b[1] = 100
? "copy kept apart:", a[1], b[1], a[4]
Fill(@a)
? "by reference:", a[2], b[2]
a[3] = "text" + str(a[2], 2)
c = a[3]
a[3] = .F.
? "text moved:", c, a[3]
a[4] = a
d = a[4]
? "array in itself:", alen(d), d[1], d[2], vartype(d[4])
d[1] = -1
held = a[4]
? "nested copy:", a[1], held[1], d[1]
LOCAL l[3]
l[2] = "local"
? "local array:", l[2], l[1]
DIMENSION g[2, 3]
g[2, 3] = 23
g[5] = 5
? "two subscripts:", g[2, 3], g[6], g[2, 2]
DIMENSION bad[3]
bad[1] = 0
bad[2] = -1
bad[3] = 5
FOR EACH k IN bad
   TRY
      ? a[k]
   CATCH TO e
      ? "read", k, e.errorno
   ENDTRY
   TRY
      a[k] = 1
   CATCH TO e
      ? "write", k, e.errorno
   ENDTRY
NEXT
x = 1.5
TRY
   ? "numeric subscript:", a[x]
CATCH TO e
   ? "numeric subscript:", e.errorno
ENDTRY
? "still:", a[2]
big = 4611686018427387904
? "product past 64 bits:", big * 4, vartype(big * 4), 3 * 7

FUNCTION Fill(arr)
   arr[2] = 99
   RETURN .T.
