* Four threads share one collection and make objects of one class at once:
* each walks the collection while the others add and remove their own keys,
* and each instance starts with its own copy of the class's array default.
LOCAL aWorkers[4], i
oShared = CREATEOBJECT("Collection")
FOR i = 1 TO 20
   oShared.Add(i, "k" + CHR(64 + i))
ENDFOR
FOR i = 1 TO 4
   aWorkers[i] = CREATEOBJECT("Walker", i, oShared)
ENDFOR
FOR i = 1 TO 4
   aWorkers[i].Start()
ENDFOR
FOR i = 1 TO 4
   aWorkers[i].Join()
ENDFOR
? "entries left:", oShared.Count
FOR i = 1 TO 4
   ? "walker", i, "sums:", aWorkers[i].nSum, "items:", aWorkers[i].nItems
ENDFOR

DEFINE CLASS Item AS Custom
   DIMENSION aSlots[3]
ENDDEFINE

DEFINE CLASS Walker AS Thread
   nSlot = 0
   oList = .NULL.
   nSum = 0
   nItems = 0
   PROCEDURE Init(tnSlot, toList)
      This.nSlot = tnSlot
      This.oList = toList
   ENDPROC
   PROCEDURE Run
      LOCAL i, lnSum, loItem, lcKey
      lcKey = "own" + CHR(48 + This.nSlot)
      FOR i = 1 TO 2000
         lnSum = 0
         FOR EACH value IN This.oList
            IF VARTYPE(value) = "N"
               lnSum = lnSum + value
            ENDIF
         ENDFOR
         This.oList.Add("mine", lcKey)
         This.oList.Remove(lcKey)
         loItem = CREATEOBJECT("Item")
         loItem.aSlots[1] = i
         loItem.AddProperty("nOwner", This.nSlot)
         IF loItem.aSlots[1] = i AND VARTYPE(loItem.aSlots[2]) = "L"
            This.nItems = This.nItems + 1
         ENDIF
      ENDFOR
      This.nSum = lnSum
   ENDPROC
ENDDEFINE
