-- The second save is what a third session finds.

local info = nanite_assembly_info("/Game/Saved/SM_Saved")
expect.eq(info.node_count, 1, "one node after the second save")
expect.eq(info.parts[1].mesh, "/Engine/BasicShapes/Cone.Cone", "the new part")
