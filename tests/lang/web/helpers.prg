* URL encoding, query objects, HTML escaping, MIME header words and HTTP
* header lines.
DIMENSION names[1]
? http.urlencode("abc-_.~XYZ019"), http.urlencode("a b&c=d/e?f#g+h%i")
? http.urlencode("Grüße € 𝄞"), http.urlencode("") == ""
? http.urldecode("a%20b%26c%3Dd%2Fe%3Ff%23g%2Bh%25i"), http.urldecode("a+b"), http.urldecode("%7e%7E")
? http.urldecode("Gr%C3%BC%C3%9Fe%20%E2%82%AC"), http.urldecode("100%"), http.urldecode("%zz%4"), http.urldecode("%FF") == "�"
s = "reserved :/?#[]@!$&'()*+,;= and non-ASCII äöü 日本"
? "round trip:", http.urldecode(http.urlencode(s)) == s
? html.escape([<a href="x?a=1&b='2'">Tom & Jerry</a>]), html.escape("plain é")
? mime.header("Plain subject"), mime.header("Grüße")
words = array(1)
long = mime.header(replicate("ä", 40))
? strtran(long, chr(13) + chr(10), "|")
? "words of at most 75 characters:", alines(words, long, 1), len(words[1]), len(words[2])
? mime.header("looks =?encoded?= already")
? http.header("Content-Type: text/plain; charset=utf-8")
? http.header("X-Empty:", .T.)
? "bad header lines:", fails("http.header('No colon')"), fails("http.header('Bad Name: x')"), fails("http.header('X: a' + chr(13) + chr(10) + 'Injected: 1')")
* A query as an object: names and values decoded, the later of two values
* kept, "name[]" gathered in an array, empty names skipped.
q = http.parsequery("?a=1&b=x+y%20z&flag&a=3&l[]=1&l[]=2&=skip&n%C3%A4me=%E2%82%AC&&city=S%C3%A3o+Paulo")
? Json.Encode(q)
? "values:", q.a, q.b, "[" + q.flag + "]", alen(q.l), q.l[2], q.city
? "an empty query has no members:", amembers(names, http.parsequery("")), amembers(names, http.parsequery("?"))

FUNCTION fails(expression)
TRY
  = evaluate(expression)
CATCH TO e
  RETURN e.errorno
ENDTRY
RETURN 0
