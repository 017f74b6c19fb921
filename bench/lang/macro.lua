-- 1,000,000 evaluations of an expression given as text.
local expr = "return n + i % 7"
n = 0
for k = 1, 1000000 do
   i = k
   n = load(expr)()
end
print("result:", n)
