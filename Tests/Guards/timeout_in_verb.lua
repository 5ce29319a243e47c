-- The build's request loops in a metamethod while the verb reads it: the build must not happen, nor its save.
local part = { mesh = "/Engine/BasicShapes/Cube", transforms = { {} } }
nanite_assembly_build(setmetatable({ parts = { part }, save = true }, { __index = function(_, key)
	while true do end
end }))
print("not reached")
