-- The build's request goes over the memory limit in a metamethod that returns at once: the verb is stopped before it
-- builds anything, and the editor is left as it was.
local history = #headless.undo_history()
local part = { mesh = "/Engine/BasicShapes/Cube", transforms = { {} } }
local request = setmetatable({ parts = { part }, save = true }, { __index = function(_, key)
	if key == "output" then
		return "/Game/Grown" .. string.rep("x", 64 * 1024 * 1024):sub(1, 0)
	end
end })
print(pcall(nanite_assembly_build, request))
collectgarbage()
print("transactions", headless.transaction_depth())
print("undo history grew", #headless.undo_history() ~= history)
print("object", headless.object_info("/Game/Grown.Grown"))
print("dirty", headless.is_package_dirty("/Game/Grown"))
print("file", headless.package_file_exists("/Game/Grown"))
