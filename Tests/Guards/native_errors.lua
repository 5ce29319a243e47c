-- Errors of natives keep their texts and positions under the guards, and an error out of a native does not leave the
-- memory limit lifted.
print(pcall(nanite_assembly_info, 42))
print(pcall(headless.set_cvar))
print(pcall(function() return #string.rep("x", 64 * 1024 * 1024) end))
local built = nanite_assembly_build{ parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = { {} } } }, output = "/Game/Guarded" }
print("built", built.ok)
nanite_assembly_info(42)
