-- 1,000,000 field reads: 10,000 records held as tables, read 100 times.
local items = {}
for i = 1, 10000 do items[i] = {nval = i % 97, kind = ""} end
local n = 0
for pass = 1, 100 do
   for _, row in ipairs(items) do n = n + row.nval end
end
print("result:", n)
