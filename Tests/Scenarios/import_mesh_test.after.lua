-- In a new editor: the replaced mesh and the assembly built from the first one load from their files.

local box = nanite_assembly_info("Imported/SM_Box")
expect.eq(box.ok, true, "the imported mesh loads")
expect.eq(box.material_slot_count, 1, "as it was replaced")
local row = nanite_assembly_info("Imported/SM_Row")
expect.eq(row.ok, true, "the assembly loads")
expect.eq(row.parts[1].mesh, "/Game/Imported/SM_Box.SM_Box", "with the imported part")
expect.eq(row.node_count, 3, "and its three nodes")
