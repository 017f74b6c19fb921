* Json.Encode of every value kind and Json.Decode back.
? Json.Encode(.T.), Json.Encode(.F.), Json.Encode(null), Json.Encode(0), Json.Encode(-42), Json.Encode(9223372036854775807)
? Json.Encode(2.5), Json.Encode(-0.125), Json.Encode(1/4), Json.Encode(1000000000000000 * 10.0), Json.Encode(0.1 + 0.2)
? Json.Encode($12.5), Json.Encode(-$0.0001), Json.Encode($1000), Json.Encode($0)
? Json.Encode({^2024-02-29}), Json.Encode({^2024-02-29 13:45:07}), Json.Encode({})
? Json.Encode("plain"), Json.Encode([quote " backslash \ slash /]), Json.Encode(chr(9) + chr(10) + chr(13) + chr(8) + chr(12) + chr(1) + chr(31))
? Json.Encode("Grüße € 𝄞"), Json.Encode(chr(233)), Json.Encode(filetostr_binary())
empty = Json.Decode("[]")
? Json.Encode(empty), Json.Encode(array(1, array(2, array(3, empty)), "x"))
DIMENSION grid(2, 3)
grid[1, 1] = "a"
grid[2, 3] = 6
? "two dimensions are rows:", Json.Encode(grid)

* Decoded values and their types.
v = Json.Decode('[1, -7, 2.50, 1e2, 1.5e-3, 12345678901234567890, true, false, null, "tab\there", "\u00e9\ud834\udd1e", [], [[]]]')
w = v[13]
? alen(v), vartype(v[1]), vartype(v[3]), v[1] + v[2], v[3] * 2 = 5, v[4] = 100, v[5] = 0.0015, vartype(v[6]), v[6] > 1200000000 * 10000000000, v[7], v[8], isnull(v[9])
? v[10], len(v[11]), v[11] == "é𝄞", alen(v[12]), alen(w), alen(w[1])
? "tiny numbers:", Json.Encode(Json.Decode("[5e-324, 1e-999, -0.0]"))
? "a scalar document:", Json.Decode("  42 "), Json.Decode('"text"'), Json.Decode("true"), isnull(Json.Decode("null"))

* Decode(Encode(x)) gives x back for nested arrays.
inner = array(.T., .F., empty)
inner[2] = null
x = array(1, "two", array(3.5, inner, "deep"), -4, "Grüße", .F.)
y = Json.Decode(Json.Encode(x))
? "round trip:", same(x, y), Json.Encode(y) == Json.Encode(x)
n = empty
FOR i = 1 TO 50
  n = array(i, n)
NEXT
? "fifty levels:", same(Json.Decode(Json.Encode(n)), n), len(Json.Encode(n))
* Text of another charset is encoded as UTF-8.
t = filetostr_latin()
? "latin text:", Json.Encode(t), Json.Decode(Json.Encode(t)) == t

FUNCTION same(a, b)
LOCAL i
IF vartype(a) <> vartype(b)
  RETURN .F.
ENDIF
IF vartype(a) <> "A"
  RETURN isnull(a) AND isnull(b) OR !isnull(a) AND !isnull(b) AND a == b
ENDIF
IF alen(a) <> alen(b)
  RETURN .F.
ENDIF
FOR i = 1 TO alen(a)
  IF !same(a[i], b[i])
    RETURN .F.
  ENDIF
NEXT
RETURN .T.

* Bytes that are no text: a binary string.
FUNCTION filetostr_binary
LOCAL dir, b
dir = chrtran(system("mktemp -d"), chr(10), "")
strtofile(chr(0) + chr(255) + "AB", dir + "/b.bin")
b = filetostr(dir + "/b.bin", "binary")
system("rm -r " + escapearg(dir))
RETURN b

FUNCTION filetostr_latin
LOCAL dir, t
dir = chrtran(system("mktemp -d"), chr(10), "")
strtofile(chr(71) + chr(252) + chr(223) + chr(101), dir + "/l.txt")
t = filetostr(dir + "/l.txt", "iso-8859-1")
system("rm -r " + escapearg(dir))
RETURN t
