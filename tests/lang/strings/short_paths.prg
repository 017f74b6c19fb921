* chr() hands out shared one-byte strings: every byte, the edges of the
* range, and strings built from them never change what chr() gives later.
? len(chr(0)), asc(chr(0)), asc(chr(127)), asc(chr(128)), asc(chr(255)), charset(chr(97)), charset(chr(200))
? chr(65) + chr(66) + chr(67), chr(128) == cpconvert(1252, "€"), chr(97) $ "cat", .NULL. == chr(.NULL.)
x = chr(65)
x = x + "Z"
y = chr(65)
y = y + "Q"
? x, y, chr(65), chr(66), len(chr(65) + chr(66))
try_eval("chr(256)")
try_eval("chr(-1)")
try_eval("chr('a')")
* A code above 127 is windows-1252 text: it joins UTF-8 text converted.
? "é" + chr(233), len("é" + chr(233)), charset("é" + chr(97)), charset(chr(97) + "é"), chr(97) + "é"

* substr: position 0, negative, past the end; counts past the end.
t = "abcdef"
? "[" + substr(t, 0, 3) + "]", "[" + substr(t, 7) + "]", "[" + substr(t, 9, 2) + "]", substr(t, 5, 10), substr(t, 2), substr(t, 6, 1), "[" + substr(t, 3, 0) + "]"
try_eval("substr(t, -1, 2)")
try_eval("substr(t, 2, -1)")
? substr(.NULL., 1, 2) == .NULL., "[" + substr("", 1, 2) + "]", len(substr("", 1))
* UTF-8 text whose ASCII prefix ends inside, before or after the range.
u = "abcdéfgh"
? substr(u, 3, 4), substr(u, 6, 2), substr(u, 1, 4), substr(u, 5, 1), len(substr(u, 3, 4)), len(u), len(substr(u, 5))
* The same in a single-byte charset and in UTF-16.
w = cpconvert(1252, u)
? substr(w, 3, 4), substr(w, 6, 2), len(w), charset(substr(w, 5, 1)), asc(substr(w, 5, 1))
v = cpconvert("utf-16le", u)
? substr(v, 3, 4), len(substr(v, 5)), charset(substr(v, 2, 2))

* upper()/lower(): ASCII, accented and other scripts, in UTF-8 and windows-1252.
? upper(""), len(upper("")), upper("mixed Case 123"), lower("MIXED Case 123"), upper(u), lower(upper(u))
? upper("straße"), upper("ǆemal"), upper("αβγ ω"), lower("ΑΒΓ Ω"), upper("привет"), upper("çà")
? upper(w), charset(upper(w)), asc(upper(chr(233))), asc(lower(chr(201))), upper(substr(u, 4, 3)), upper(substr(u, 1, 4))
? upper(v), charset(upper(v)), upper(chr(0)) == chr(0), upper(.NULL.) == .NULL.
* The result is a string of its own: building on it leaves the source alone.
s = substr(u, 1, 3)
s2 = upper(s)
s2 = s2 + "!"
? s, s2, u, len(upper(substr(u, 2, 3)))

* Pieces appended in a loop keep their charset, count and text.
c = ""
FOR i = 1 TO 300
   c = c + "ab" + chr(97 + i % 26)
NEXT
c2 = c
c = c + "é"
? len(c), len(c2), right(c, 4), right(c2, 3), substr(c, 898, 4), charset(c)
n = 0
nLen = len(c2) - 16
FOR i = 1 TO 1000
   n = n + len(upper(substr(c2, 1 + (i * 7) % nLen, 16)))
NEXT
? n, upper(substr(c, 895, 10))

PROCEDURE try_eval(text)
  TRY
    ? text, "gave", evaluate(text)
  CATCH TO e
    ? text, "is error", e.errorno
  ENDTRY
