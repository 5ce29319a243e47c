-- A string far over the limit, not caught.
local text = string.rep("x", 64 * 1024 * 1024)
print("not reached", #text)
