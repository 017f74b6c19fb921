* Two threads load program files at once: each writes files of its own,
* runs a procedure IN each new file (a load), and calls the functions of
* the files it loaded before by name (look-ups among the loaded programs)
* while the other thread is loading.
LOCAL aLoaders[2], i
FOR i = 1 TO 2
   aLoaders[i] = CREATEOBJECT("Loader", i)
ENDFOR
FOR i = 1 TO 2
   aLoaders[i].Start()
ENDFOR
FOR i = 1 TO 2
   aLoaders[i].Join()
ENDFOR
FOR i = 1 TO 2
   ? "loader", i, "ran:", aLoaders[i].nRan, "sum:", aLoaders[i].nSum
ENDFOR
* The main stack reaches what the threads loaded.
? "from main:", f1_5(1), f2_30(1)

DEFINE CLASS Loader AS Thread
   nSlot = 0
   nRan = 0
   nSum = 0
   PROCEDURE Init(tnSlot)
      This.nSlot = tnSlot
   ENDPROC
   PROCEDURE Run
      LOCAL k, j, lcStem, lcFile
      FOR k = 1 TO 30
         lcStem = "f" + LTRIM(STR(This.nSlot)) + "_" + LTRIM(STR(k))
         lcFile = "m" + lcStem + ".prg"
         = STRTOFILE("PROCEDURE p" + lcStem + CHR(10) + ;
            "PARAMETERS toLoader" + CHR(10) + ;
            "toLoader.nRan = toLoader.nRan + 1" + CHR(10) + ;
            "FUNCTION " + lcStem + "(n)" + CHR(10) + ;
            "RETURN n + " + LTRIM(STR(k)) + CHR(10), lcFile)
         DO ("p" + lcStem) IN (lcFile) WITH This
         FOR j = 1 TO k
            This.nSum = This.nSum + EVALUATE("f" + LTRIM(STR(This.nSlot)) + "_" + LTRIM(STR(j)) + "(0)")
         ENDFOR
      ENDFOR
   ENDPROC
ENDDEFINE
