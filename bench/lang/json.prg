* Json.Decode and Json.Encode of a 10 MB document (81,000 rows), three times.
row = '[12345,"name \u00e9 \"quoted\" text",1234.5678,true,null,"2024-01-02",[1,2,3,"a somewhat longer string value"],-0.25,false]'
doc = "[" + replicate(row + ",", 80999) + row + "]"
FOR pass = 1 TO 3
   data = Json.Decode(doc)
   text = Json.Encode(data)
NEXT
? "result:", len(doc), alen(data), len(text)
