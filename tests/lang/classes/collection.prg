* Collection: values with or without keys, found by key or position.
c = CREATEOBJECT("Collection")
c.Add("red", "r")
c.Add("green", "g")
c.Add("blue", "b")
c.Add("unkeyed")
? c.Count, c.Item("g"), c.Item(1), c.Item(4), c["b"], c[3]
? c.GetKey(2), c.GetKey("b"), "[" + c.GetKey(4) + "]", "[" + c.GetKey(0) + "]", c.GetKey("nokey")
* Keys are unique: 2062, and the collection stays as it was.
= Attempt([c.Add("crimson", "r")])
? c.Count, c.Item("r")
* Misses are 2061, keys compare case and all.
= Attempt([c.Item("R")])
= Attempt([c.Item(0)])
= Attempt([c.Item(9)])
= Attempt([c.Remove("zz")])
* Item replaces a value in place.
c.Item("g") = "lime"
c[4] = "none"
? c.Item(2), c.Item(4)
* Insertion before and after an entry, by key or position.
c.Add("white", "w", "g")
c.Add("black", "k", , 1)
= Show(c)
* Removal by key and by position; positions close up behind it.
c.Remove("w")
c.Remove(1)
= Show(c)
? c.GetKey("b"), c.Item(c.GetKey("b"))
* FOR EACH walks it while a second walk over the same collection runs inside.
FOR EACH outer IN c
   lcLine = outer + ":"
   FOR EACH inner IN c
      lcLine = lcLine + " " + LEFT(inner, 1)
   ENDFOR
   ? lcLine
ENDFOR
* KeySort chooses the order: reverse positions, keys, keys last first.
FOR n = 1 TO 3
   c.KeySort = n
   lcLine = "keysort " + CHR(48 + n) + ":"
   FOR EACH value IN c
      lcLine = lcLine + " " + value
   ENDFOR
   ? lcLine
ENDFOR
= Attempt([c.KeySort = 4])
= Attempt([c.Count = 1])
c.KeySort = 2
FOR EACH KEY k VALUE v IN c
   ?? k + "=" + v + " "
ENDFOR
?
* Removing while walking by key: the walk goes on after the key it was on.
FOR EACH v IN c
   IF v == "lime"
      c.Remove("g")
   ENDIF
   ?? v + " "
ENDFOR
?
? c.Count, c.GetKey(1), c.GetKey(2)
c.Remove(-1)
? c.Count
* Objects kept in a collection live as long as it holds them.
o = CREATEOBJECT("Collection")
o.Add(CREATEOBJECT("Custom"), "first")
? o.Item("first").Class
* A subclass of Collection has its members and its own.
s = CREATEOBJECT("Stack")
s.Push("a")
s.Push("b")
? s.Pop(), s.Count, s.BaseClass

FUNCTION Show(toCollection)
   LOCAL lcLine, i
   lcLine = ""
   FOR i = 1 TO toCollection.Count
      lcLine = lcLine + toCollection.GetKey(i) + "=" + toCollection.Item(i) + " "
   ENDFOR
   ? lcLine
ENDFUNC

FUNCTION Attempt(tcCode)
   TRY
      &tcCode
      ? tcCode, "done"
   CATCH TO e
      ? e.ErrorNo, e.Message
   ENDTRY
ENDFUNC

DEFINE CLASS Stack AS Collection
   PROCEDURE Push(tvValue)
      This.Add(tvValue)
   ENDPROC
   FUNCTION Pop
      LOCAL lvTop
      lvTop = This.Item(This.Count)
      This.Remove(This.Count)
      RETURN lvTop
   ENDFUNC
ENDDEFINE
