local nSum = 0
for i = 1, 20000000 do
  nSum = nSum + i
end
print("result: " .. nSum)
