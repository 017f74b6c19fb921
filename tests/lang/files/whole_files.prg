* filetostr and strtofile round trips, file, directory, adir, fdate, ftime.
dir = chrtran(system("mktemp -d"), chr(10), "")

* Every byte value survives a round trip (chr gives single bytes of windows-1252).
bytes = chr(0)
FOR i = 1 TO 255
  bytes = bytes + chr(i)
NEXT
? "binary written:", strtofile(bytes, dir + "/bytes.bin")
back = filetostr(dir + "/bytes.bin", "binary")
same = len(back) = 256
FOR i = 1 TO 256
  same = same AND asc(substr(back, i, 1)) = i - 1
NEXT
? "binary read back:", len(back), same, vartype(back)

* UTF-8 text keeps its characters; a byte order mark tells the charset.
text = filetostr(dir + "/bytes.bin", "windows-1252")
utf = "Grüße, ½ € " + text
? "utf-8 bytes:", strtofile(utf, dir + "/text.txt", "utf-8"), filetostr(dir + "/text.txt", "utf-8") == utf
? "with a BOM:", strtofile("Grüße", dir + "/bom.txt", 4), filetostr(dir + "/bom.txt") == "Grüße", len(filetostr(dir + "/bom.txt"))
? "UTF-16 with a BOM:", strtofile("Grüße", dir + "/wide.txt", 2), filetostr(dir + "/wide.txt") == "Grüße"
? "appending:", strtofile("ab", dir + "/add.txt"), strtofile("cd", dir + "/add.txt", .T.), strtofile("ef", dir + "/add.txt", 1), filetostr(dir + "/add.txt")
? "replacing:", strtofile("x", dir + "/add.txt", .F.), filetostr(dir + "/add.txt")
? "empty:", strtofile("", dir + "/empty.txt"), len(filetostr(dir + "/empty.txt"))
? "a character the charset lacks:", fails("strtofile('€', dir + '/x.txt', 'iso-8859-1')")
? "missing file:", fails("filetostr(dir + '/nothing')"), "folder:", fails("filetostr(dir)")
? "no such folder to write in:", fails("strtofile('x', dir + '/no/such/file')")

* Names match without regard to case, file by file and folder by folder.
system("mkdir " + escapearg(dir + "/Sub") + " " + escapearg(dir + "/.hidden"))
strtofile("data", dir + "/Sub/Data.TXT")
? "file:", file(dir + "/sub/data.txt"), file(dir + "/SUB/DATA.txt"), file(dir + "/sub/other.txt"), file(dir + "/sub"), file(dir + "/sub", 1)
? "directory:", justfname(directory(dir + "/SUB")), directory(dir + "/sub/data.txt") == "", directory(dir + "/nope") == ""
? "hidden folders:", directory(dir + "/.hidden") == "", justfname(directory(dir + "/.HIDDEN", 1))
? "read through another case:", filetostr(dir + "/SUB/data.txt")
* Writing to a name that exists in another case writes that file.
strtofile("more", dir + "/sub/DATA.txt")
? "one file only:", adir(found, dir + "/sub/*"), found[1, 1], filetostr(dir + "/Sub/Data.TXT")

* adir: names in order, sizes, attributes; folders and hidden names on request.
strtofile("12345", dir + "/b.prg")
strtofile("1", dir + "/A.PRG")
n = adir(list, dir + "/*.prg")
? "adir:", n, list[1, 1], list[1, 2], list[2, 1], list[2, 2], list[2, 5], vartype(list[1, 3]), len(list[1, 4])
? "every entry:", adir(list, dir + "/*.*"), adir(list, dir + "/*", "D"), adir(list, dir + "/*", "DH")
? "folder row:", list[1, 1], list[1, 5]
? "nothing found leaves the array:", adir(list, dir + "/*.xyz"), alen(list, 1)
? "a pattern of one letter:", adir(list, dir + "/?.prg"), adir(list, dir + "/B*")
? "bad attributes:", fails("adir(list, dir + '/*', 'Q')")

? "fdate:", vartype(fdate(dir + "/b.prg")), ttod_midnight(fdate(dir + "/b.prg")), len(ftime(dir + "/b.prg")), substr(ftime(dir + "/b.prg"), 3, 1)
? "missing:", fails("fdate(dir + '/none')"), fails("ftime(dir + '/none')")
? "curdir ends in a separator:", right(curdir(), 1)

system("rm -r " + escapearg(dir))

FUNCTION ttod_midnight(t)
RETURN fdate(dir + "/b.prg", 1) >= t

FUNCTION fails(expression)
TRY
  = evaluate(expression)
CATCH TO e
  RETURN e.errorno
ENDTRY
RETURN 0
