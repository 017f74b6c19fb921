* Threads build strings from one shared start at the same time: chr()'s
* shared one-byte strings, appends racing for the same free tail, substr
* views and upper() copies give each stack exactly its own text.
cBase = ""
FOR i = 1 TO 100
   cBase = cBase + "ab" + chr(97 + i % 26)
NEXT
LOCAL aWorkers[3], j
FOR j = 1 TO 3
   aWorkers[j] = CREATEOBJECT("Builder", j, cBase)
ENDFOR
FOR j = 1 TO 3
   aWorkers[j].Start()
ENDFOR
? "main:", Build(0, cBase)
FOR j = 1 TO 3
   aWorkers[j].Join()
ENDFOR
FOR j = 1 TO 3
   ? "thread", j, "->", aWorkers[j].cResult
ENDFOR
? len(cBase), right(cBase, 6)

FUNCTION Build(nSeed, cStart)
   LOCAL c, k, n, nLen
   c = cStart
   FOR k = 1 TO 3000
      c = c + chr(65 + (k + nSeed) % 26) + chr(48 + nSeed)
   NEXT
   n = 0
   nLen = len(c) - 8
   FOR k = 1 TO 3000
      n = n + len(upper(substr(c, 1 + (k * 7) % nLen, 8))) + at(chr(48 + nSeed), substr(c, 301 + k, 2))
   NEXT
   RETURN transform(len(c)) + " " + transform(n) + " " + right(c, 6) + " " + upper(substr(c, 299, 6))

DEFINE CLASS Builder AS Thread
   nSeed = 0
   cStart = ""
   cResult = ""
   PROCEDURE Init(tnSeed, tcStart)
      This.nSeed = tnSeed
      This.cStart = tcStart
   ENDPROC
   PROCEDURE Run
      This.cResult = Build(This.nSeed, This.cStart)
   ENDPROC
ENDDEFINE
