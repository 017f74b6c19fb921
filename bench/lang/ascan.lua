-- 1,000,000 look-ups in a 1,000-element array.
local function ascan(a, v)
   for k = 1, #a do
      if a[k] == v then return k end
   end
   return 0
end
local a = {}
for i = 1, 1000 do a[i] = i * 3 end
local n = 0
for i = 1, 1000000 do
   n = n + ascan(a, (i % 1000 + 1) * 3)
end
print("result:", n)
