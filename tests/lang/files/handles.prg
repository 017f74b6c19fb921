* fopen, fgets, fread, fseek, ftell, feof, ferror over files made for the test.
dir = chrtran(system("mktemp -d"), chr(10), "")
f = dir + "/lines.txt"
? "bytes written:", strtofile("crlf" + chr(13) + chr(10) + "lf" + chr(10) + "cr" + chr(13) + chr(13) + chr(10) + "last", f)
h = fopen(f)
? "handle:", h > 0, "ferror:", ferror()
DO WHILE !feof(h)
  ? "[" + fgets(h) + "]"
ENDDO
? "at the end:", feof(h), ftell(h), "[" + fgets(h) + "]", "[" + fread(h, 5) + "]", ferror()
? "seek and read:", fseek(h, 2), fread(h, 3), ftell(h)
? "from the end:", fseek(h, -4, 2), fread(h, 100), feof(h)
? "from here:", fseek(h, 0), fseek(h, 4, 1), asc(fread(h, 1))
? "past the end reads nothing:", fseek(h, 100), "[" + fread(h, 10) + "]", feof(h)
? "a line cut at its limit:", fseek(h, 0), fgets(h, 2), fgets(h, 2), "[" + fgets(h) + "]"
? "close:", fclose(h), ferror(), "again:", fclose(h), ferror()
? "closed handle:", fgets(h) == "", ferror(), fseek(h, 0), ferror(), ftell(99), feof(99)

* A missing file is -1 with ferror() 2; a folder can't be opened (5).
? "missing:", fopen(dir + "/missing.txt"), ferror(), fopen(dir), ferror()
* Names are matched without regard to case.
h = fopen(dir + "/LINES.TXT")
? "other case:", h > 0, fgets(h), fclose(h)
* A number of files at once keep their own positions.
h1 = fopen(f)
h2 = fopen(f)
? "two handles:", h1 <> h2, fgets(h1), fgets(h1), fgets(h2), fclose(h1), fclose(h2)
* Write access opens the file without emptying it.
h = fopen(f, 2)
? "read and write:", h > 0, fgets(h), fclose(h)
? "bad mode:", fails("fopen(f, 3)"), "bad charset:", fails("fopen(f, 0, 'no-such-charset')")
system("rm -r " + escapearg(dir))

FUNCTION fails(expression)
TRY
  = evaluate(expression)
CATCH TO e
  RETURN e.errorno
ENDTRY
RETURN 0
