* Work areas, data sessions and SCATTER NAME records are objects of classes:
* reflection, added members and the errors of the object model apply.
CREATE CURSOR card (name C(6), age N(3), class C(4))
APPEND BLANK
REPLACE name WITH "Ann"
REPLACE age WITH 41
REPLACE class WITH "1A"
* A work area is an object of the class File whose fields come first.
? "table:", card.BaseClass, card.ParentClass, card.name, card.age
? "field hides member:", card.class
card.age = 42
? "written through the object:", age
card.AddProperty("cNote", "kept")
? "added:", card.cNote
card.cNote = "changed"
? "assigned:", card.cNote
card.AddProperty("name", "Bo")
? "addproperty of a field writes it:", name
TRY
  card.RemoveProperty("age")
CATCH TO e
  ? "remove a field:", e.ErrorNo
ENDTRY
card.RemoveProperty("cNote")
TRY
  ? card.cNote
CATCH TO e
  ? "removed:", e.ErrorNo, e.Message
ENDTRY
TRY
  card.nosuch = 1
CATCH TO e
  ? "unknown name assigned:", e.ErrorNo
ENDTRY
TRY
  card.Launch()
CATCH TO e
  ? "unknown method:", e.ErrorNo
ENDTRY
TRY
  o = CREATEOBJECT("File")
CATCH TO e
  ? "File is abstract:", e.ErrorNo
ENDTRY
* A session made by CREATEOBJECT has its own work areas and settings.
DIMENSION aNames[1]
oSession = CREATEOBJECT("Session")
? "session:", oSession.Class, oSession.DataSessionId, SET("DATASESSION")
= AMEMBERS(aNames, oSession)
? "members:", ALEN(aNames), aNames[1], aNames[2], aNames[3], aNames[4]
TRY
  oSession.DataSessionId = 9
CATCH TO e
  ? "read-only:", e.ErrorNo
ENDTRY
SET DATASESSION TO oSession.DataSessionId
? "inside:", SET("DATASESSION"), USED("card")
CREATE CURSOR other (x N(2))
SET EXACT ON
SET DATASESSION TO 1
? "back:", USED("card"), USED("other"), SET("EXACT")
nId = oSession.DataSessionId
oSession = .NULL.
TRY
  SET DATASESSION TO nId
CATCH TO e
  ? "released session:", e.ErrorNo
ENDTRY
* SCATTER NAME makes an Empty object: the fields and nothing else.
SELECT card
SCATTER NAME oRec
= AMEMBERS(aNames, oRec)
? "record:", oRec.name, oRec.age, ALEN(aNames), aNames[1], aNames[2], aNames[3]
TRY
  ? oRec.BaseClass
CATCH TO e
  ? "no class member:", e.ErrorNo
ENDTRY
= ADDPROPERTY(oRec, "nExtra", 7)
oRec.age = 50
GATHER NAME oRec
? "gathered:", age, oRec.nExtra
* ADDITIVE adds to an object of any class and keeps what it had.
oCard = CREATEOBJECT("Holder")
REPLACE age WITH 60
SCATTER NAME oCard ADDITIVE
? "additive:", oCard.BaseClass, oCard.cOwn, oCard.name, oCard.age, PEMSTATUS(oCard, "age", 4)
oCard.age = 61
GATHER NAME oCard
? "gathered from a user object:", age
SCATTER NAME oRec
? "a fresh object:", PEMSTATUS(oRec, "nExtra", 5), oRec.age

DEFINE CLASS Holder AS Custom
   cOwn = "mine"
   age = 0
ENDDEFINE
