# json.loads and json.dumps of a 10 MB document of objects (60,000 records
# with a nested object and an array each), three times.
import sys

sys.path.pop(0)  # keep this folder's json.py from hiding the json module
import json  # noqa: E402

rec = ('{"id":12345,"name":"name \\u00e9 \\"quoted\\" text","price":1234.5678,"active":true,"note":null,'
       '"address":{"street":"Main Street 1","city":"Springfield","zip":"12345"},"tags":["a","bb","ccc"],"ratio":-0.25}')
doc = "[" + (rec + ",") * 59999 + rec + "]"
for _ in range(3):
    data = json.loads(doc)
    text = json.dumps(data, separators=(",", ":"), ensure_ascii=False)
print("result:", len(doc), len(data), len(text))
