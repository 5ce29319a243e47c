-- The file keeps the denser field: Undo changed only the mesh in memory, and the script saved nothing after it.
local info = expect.ok(nanite_assembly_info("/Game/Examples/SM_RockField"))
expect.eq(info.node_count, 550, "the denser field on disk")
expect.eq(info.parts[1].node_count, 400, "boulders on disk")
expect.eq(info.parts[2].node_count, 150, "spikes on disk")
