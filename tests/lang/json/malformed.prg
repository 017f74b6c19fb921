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

* Objects wait for the object model: both directions are 1001, @err or not.
TRY
  = Json.Decode('[1, {"a": 1}]', @err)
CATCH TO e
  ? "object in JSON:", e.errorno, e.message
ENDTRY
TRY
  ERROR "x"
CATCH TO thing
ENDTRY
TRY
  = Json.Encode(array(1, thing))
CATCH TO e
  ? "object to JSON:", e.errorno, e.message
ENDTRY

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
