* JSON objects and the objects of the language: Json.Decode makes Empty
* objects with a property per key, in the order of the text; Json.Encode
* * writes an object's public properties and a collection's items (by key
* when every item has one).
DIMENSION names[1]
o = Json.Decode('{"name": "Ann", "age": 41, "tags": ["a", "b"], "inner": {"x": 1.5, "list": [true, null, {}]}}')
? "decoded:", o.name, o.age, alen(o.tags), o.inner.x, vartype(o.inner.list[3]), amembers(names, o.inner.list[3])
? "members:", amembers(names, o), names[1], names[2], names[3], names[4]
? "key case kept:", Json.Encode(Json.Decode('{"firstName": 1, "URL": 2, "a b": 3, "": 4}'))
? "a repeated key keeps the later value:", Json.Encode(Json.Decode('{"a": 1, "b": 2, "a": 3}'))
? "properties reach back:", getpem(Json.Decode('{"a b": 3}'), "a b")

* Decode(Encode(x)) gives x back for arrays and objects nested in each other.
x = Json.Decode('{"id": 7, "rows": [[1, 2], [], [{"k": "v"}]], "meta": {"ok": false, "none": null, "deep": {"deeper": {"deepest": [0.25]}}}}')
y = Json.Decode(Json.Encode(x))
? "round trip:", same(x, y), Json.Encode(y) == Json.Encode(x)
? Json.Encode(y)
a = array(1, x, array(x.meta, "text"), CREATEOBJECT("Empty"))
? "objects inside arrays:", same(Json.Decode(Json.Encode(a)), a)

* Objects of classes: public properties only, arrays as arrays, no methods,
* and not the members that name the class.
p = CREATEOBJECT("Person")
p.aPhones[2] = "555"
p.AddProperty("nAdded", 3)
? Json.Encode(p)
? "through an access method:", Json.Encode(CREATEOBJECT("Shouting"))
* Collections: an object when every item has a key, else an array.
c = CREATEOBJECT("Collection")
c.Add(1, "one")
c.Add(p, "who")
? Json.Encode(c)
c.Add("no key")
? Json.Encode(c)
? Json.Encode(CREATEOBJECT("Collection"))
* A record of a work area, as SCATTER NAME gives it.
CREATE CURSOR item (name C(5), qty N(4), due D, ok L)
APPEND BLANK
REPLACE name WITH "bolt"
REPLACE qty WITH 12
REPLACE due WITH {^2024-03-01}
SCATTER NAME rec
back = Json.Decode(Json.Encode(rec))
* JSON has no dates: a date comes back as its ISO text.
? Json.Encode(rec), back.due, vartype(back.due), back.qty = rec.qty

DEFINE CLASS Person AS Custom
   cName = "Bo"
   DIMENSION aPhones[2]
   oBoss = .NULL.
   PROTECTED nSalary
   nSalary = 100
   HIDDEN cSecret
   cSecret = "x"
   PROCEDURE Greet
   ENDPROC
ENDDEFINE

DEFINE CLASS Shouting AS Custom
   cWord = "hey"
   FUNCTION cWord_access
      RETURN UPPER(This.cWord)
   ENDFUNC
ENDDEFINE

* Values compare by kind; arrays element by element; objects property by
* property, the same names in the same order.
FUNCTION same(a, b)
LOCAL i, na, nb
LOCAL ARRAY ma[1], mb[1]
IF vartype(a) <> vartype(b)
  RETURN .F.
ENDIF
DO CASE
CASE vartype(a) = "A"
  IF alen(a) <> alen(b)
    RETURN .F.
  ENDIF
  FOR i = 1 TO alen(a)
    IF !same(a[i], b[i])
      RETURN .F.
    ENDIF
  NEXT
  RETURN .T.
CASE vartype(a) = "O"
  na = amembers(ma, a)
  nb = amembers(mb, b)
  IF na <> nb
    RETURN .F.
  ENDIF
  FOR i = 1 TO na
    IF ma[i] <> mb[i] OR !same(getpem(a, ma[i]), getpem(b, mb[i]))
      RETURN .F.
    ENDIF
  NEXT
  RETURN .T.
CASE isnull(a)
  RETURN isnull(b)
ENDCASE
RETURN a == b
