local x, y = 1.0, 0.0
for i = 1, 5000000 do
  x = x * 1.0000001 + 0.5
  y = y + x / i
end
print("result: " .. string.format("%d", math.floor(y + 0.5)))
