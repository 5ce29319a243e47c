-- RockField.lua builds and saves a sparse field, then a denser one, which the editor's Undo takes back in memory.
dofile("RockField.lua")

local info = expect.ok(nanite_assembly_info("/Game/Examples/SM_RockField"))
expect.eq(info.node_count, 160, "the sparse field after Undo")
expect.eq(info.parts[1].node_count, 120, "boulders")
expect.eq(info.parts[2].node_count, 40, "spikes")
