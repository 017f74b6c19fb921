* set() reads every setting back, by the keyword or its abbreviation.
? set("EXACT"), set("EXCLUSIVE"), set("DELETED"), set("DELE"), set("NEAR"), set("BLOCKSIZE")
? set("SPACE"), set("TEXTMERGE"), set("TEXT"), set("ASSERTS"), set("ASSERT"), set("DATASESSION")
? set("DATE"), set("CENTURY"), set("CENT"), set("HOURS"), set("SECONDS"), set("DECIMALS")
? set("POINT"), set("SEPARATOR"), set("FDOW"), "[" + set("PATH") + "]", "[" + set("PROCEDURE") + "]"
SET EXACT ON
SET SPACE OFF
SET ASSERTS ON
SET TEXTMERGE ON
SET CENTURY ON
SET SECONDS OFF
SET HOURS TO 24
SET DECIMALS TO 5
SET FDOW TO 3
SET PATH TO "alpha;beta"
? set("exact"), set("space"), set("asserts"), set("textmerge"), set("century"), set("seconds"), set("hours"), set("decimals"), set("fdow"), set("path")
SET TEXTMERGE OFF
SET SPACE ON
SET PATH TO "gamma"
SET PATH TO "delta" ADDITIVE
? set("PATH")
SET PATH TO "../programs/procedure_lib"
SET PROCEDURE TO tools
? right(set("PROCEDURE"), 24)
SET PROCEDURE TO
? "[" + set("PROCEDURE") + "]"
* Every SET DATE name comes back as it is written in the table.
SET DATE TO MDY
? set("DATE")
SET DATE TO JAPAN
? set("DATE"), set("HOURS")
DIMENSION names(4)
names[1] = "nonsense"
names[2] = ""
names[3] = "SET"
names[4] = "SYSFORMAT S"
FOR EACH name IN names
  TRY
    ? set(name)
  CATCH TO e
    ? "[" + name + "]", e.errorno
  ENDTRY
NEXT
