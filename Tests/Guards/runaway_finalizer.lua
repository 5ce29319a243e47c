-- Loops in a finalizer, where Lua runs no hook: only the backstop after the timeout ends it.
setmetatable({}, { __gc = function() while true do end end })
collectgarbage()
print("not reached")
