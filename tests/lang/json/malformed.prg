* Bad JSON is error 10 with what and where, never a crash; with @err the
* message goes to the variable and the result is null.
err = ""
= bad('[1, 2', "truncated array")
= bad('["abc', "truncated string")
= bad('', "empty text")
= bad('   ', "only blanks")
= bad('[1, 2,]', "trailing comma in an array")
= bad('[,1]', "leading comma")
= bad('["a\qb"]', "bad escape")
= bad('["\u12"]', "short unicode escape")
= bad('["\ud800"]', "lone surrogate")
= bad('[1] [2]', "two documents")
= bad('[01]', "leading zero")
= bad('[NaN]', "NaN")
= bad("['single']", "single quotes")
= bad('[1] // note', "a comment")
= bad('[tru]', "misspelt literal")
= bad('[1e999]', "a number beyond a double")
= bad('["tab' + chr(9) + 'in string"]', "control character in a string")
= bad('[1,' + chr(10) + ' 2' + chr(10) + ' x]', "position on the third line")
= bad(replicate("[", 100000), "100,000 open brackets")
= bad(replicate("[", 100000) + replicate("]", 100000), "100,000 nested arrays")
= bad(replicate("[", 1001) + replicate("]", 1001), "1,001 nested arrays")
? "1,000 nested arrays are fine:", len(Json.Encode(Json.Decode(replicate("[", 1000) + replicate("]", 1000))))
= bad(filetostr_bytes(), "bytes that are not UTF-8")

* Without @err the error is raised.
TRY
  = Json.Decode("[1,")
CATCH TO e
  ? "raised:", e.errorno, e.message
ENDTRY
* A good text clears the variable.
good = Json.Decode("[7]", @err)
? "good text:", good[1], "[" + err + "]"

* Arrays nested deeper than JSON allows here can't be written either.
deep = Json.Decode("[]")
FOR i = 1 TO 1200
  deep = array(deep)
NEXT
TRY
  = Json.Encode(deep)
CATCH TO e
  ? "too deep to encode:", e.errorno
ENDTRY

* Bad objects: each is an error with its place, never a half-built object.
= bad('{"a": 1,}', "trailing comma in an object")
= bad('{"a" 1}', "missing colon")
= bad('{1: 2}', "a key that is no string")
= bad('{"a": ', "truncated object")
= bad('{"a": [1, {"b": }]}', "a value missing inside")
= bad(replicate('{"a":', 100000), "100,000 open objects")
= bad(replicate('{"a":[', 600) + "1" + replicate(']}', 600), "1,200 nested arrays and objects")
* An object that holds itself nests without end: too deep to encode.
loop = CREATEOBJECT("Empty")
= ADDPROPERTY(loop, "self", .NULL.)
loop.self = loop
TRY
  = Json.Encode(loop)
CATCH TO e
  ? "an object holding itself:", e.errorno
ENDTRY
loop.self = .NULL.

FUNCTION bad(text, what)
LOCAL result
err = ""
result = Json.Decode(text, @err)
? what + ":", isnull(result), err
RETURN .T.

FUNCTION filetostr_bytes
LOCAL dir, b
dir = chrtran(system("mktemp -d"), chr(10), "")
strtofile('["', dir + "/b.bin")
strtofile(chr(255) + chr(254), dir + "/b.bin", .T.)
strtofile('"]', dir + "/b.bin", .T.)
b = filetostr(dir + "/b.bin", "binary")
system("rm -r " + escapearg(dir))
RETURN b
