local function add2(a, b)
  return a + b
end
local function main()
  local nSum = 0
  for i = 1, 5000000 do
    nSum = add2(nSum, i)
  end
  return nSum
end
print("result: " .. main())
