-- Asks for more than the limit twice and catches Lua's memory error each time: the process goes on.
print(pcall(string.rep, "x", 64 * 1024 * 1024))
local list = {}
print(pcall(function() for index = 1, 1e8 do list[index] = index end end))
list = nil
collectgarbage()
-- Well under the limit again, so this is served.
print(#string.rep("x", 1024 * 1024))
