local a = {}
for i = 1, 1000000 do a[i] = i * 2 end
local nSum = 0
for i = 1, 1000000 do nSum = nSum + a[i] end
print("result: " .. nSum)
