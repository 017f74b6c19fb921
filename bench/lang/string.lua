local parts = {}
for i = 1, 1000000 do parts[#parts + 1] = "ab" .. string.char(97 + i % 26) end
local c = table.concat(parts)
local n = 0
local nLen = #c - 16
for i = 1, 1000000 do
  local p = 1 + (i * 7) % nLen
  n = n + #string.upper(string.sub(c, p, p + 15))
end
print("result: " .. #c .. " " .. n)
