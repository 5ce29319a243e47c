-- A new session finds the fence as it was saved.
local info = expect.ok(nanite_assembly_info("/Game/Examples/SM_Fence"))
expect.eq(info.node_count, 16, "posts and rails after a reload")
expect.eq(info.valid_nanite_data, true, "valid Nanite data after a reload")
