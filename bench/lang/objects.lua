local Counter = {}
Counter.__index = Counter

function Counter.new()
    return setmetatable({total = 0, step = 2}, Counter)
end

function Counter:add(value)
    self.total = self.total + value
end

local function main()
    local o = Counter.new()
    for i = 1, 5000000 do
        o:add(i)
    end
    local n = 0
    for i = 1, 5000000 do
        n = n + o.step
    end
    return o.total + n
end

print("result:", main())
