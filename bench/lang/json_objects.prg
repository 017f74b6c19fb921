* Json.Decode and Json.Encode of a 10 MB document of objects (60,000
* records with a nested object and an array each), three times.
rec = '{"id":12345,"name":"name \u00e9 \"quoted\" text","price":1234.5678,"active":true,"note":null,' + ;
      '"address":{"street":"Main Street 1","city":"Springfield","zip":"12345"},"tags":["a","bb","ccc"],"ratio":-0.25}'
doc = "[" + replicate(rec + ",", 59999) + rec + "]"
FOR pass = 1 TO 3
   data = Json.Decode(doc)
   text = Json.Encode(data)
NEXT
? "result:", len(doc), alen(data), len(text)
