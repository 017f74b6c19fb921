# json.loads and json.dumps of a 10 MB document (81,000 rows), three times.
import sys

sys.path.pop(0)  # this file, named json.py, would hide the json module
import json  # noqa: E402

row = '[12345,"name \\u00e9 \\"quoted\\" text",1234.5678,true,null,"2024-01-02",[1,2,3,"a somewhat longer string value"],-0.25,false]'
doc = "[" + (row + ",") * 80999 + row + "]"
for _ in range(3):
    data = json.loads(doc)
    text = json.dumps(data, separators=(",", ":"), ensure_ascii=False)
print("result:", len(doc), len(data), len(text))
