-- What the editor offers decides a build: the plugin, the editor itself, the renderer and the registry.
local log = require("Support.log")

local function build(output)
	return nanite_assembly_build{ output = output, parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = { {} } } } }
end

headless.set_plugin_enabled("NaniteAssemblyEditorUtils", false)
expect.refused(build("/Game/Env/SM_NoPlugin"), 'plugin_disabled: the NaniteAssemblyEditorUtils plugin is compiled in but not enabled for this project; '
	.. 'add {"Name": "NaniteAssemblyEditorUtils", "Enabled": true} to the .uproject Plugins list', "nanite_assembly_build", "plugin disabled")
expect.eq(headless.object_info("/Game/Env/SM_NoPlugin"), nil, "plugin disabled: nothing created")
headless.set_plugin_enabled("NaniteAssemblyEditorUtils", true)

headless.set_editor_available(false)
expect.refused(build("/Game/Env/SM_NoEditor"), "no editor instance (GEditor is null)", "nanite_assembly_build", "no editor")
headless.set_editor_available(true)
expect.eq(headless.object_info("/Game/Env/SM_NoEditor"), nil, "no editor: nothing created")

-- The plugin is checked before the editor, and both before the request is validated.
headless.set_plugin_enabled("NaniteAssemblyEditorUtils", false)
headless.set_editor_available(false)
expect.eq(nanite_assembly_build{ output = "/Temp/X", parts = { { mesh = "Missing", transforms = { {} } } } }.error:match("^plugin_disabled") ~= nil, true,
	"plugin first")
headless.set_plugin_enabled("NaniteAssemblyEditorUtils", true)
expect.eq(nanite_assembly_build{ output = "/Temp/X", parts = { { mesh = "Missing", transforms = { {} } } } }.error, "no editor instance (GEditor is null)", "editor second")
headless.set_editor_available(true)

-- The renderer ignoring assemblies: the build succeeds, stores the parts, and warns.
headless.set_cvar("r.Nanite.AllowAssemblies", 0)
local result = build("/Game/Env/SM_Unsupported")
expect.eq(result.ok, true, "unsupported: built " .. tostring(result.error))
local warning = "assemblies_supported=false: the asset stores the assembly parts but the built Nanite resource ignores them (valid_nanite_data=false) "
	.. "until r.Nanite.AllowAssemblies=1 is set in DefaultEngine.ini [ConsoleVariables] and the editor restarts"
expect.eq(result.warning, warning, "unsupported: warning")
expect.eq(#result.warning, 236, "unsupported: warning length")
expect.eq(result.assemblies_supported, false, "unsupported: assemblies_supported")
expect.eq(result.valid_nanite_data, false, "unsupported: no valid Nanite data")
expect.eq(result.is_assembly, true, "unsupported: still an assembly")
expect.eq(result.part_count, 1, "unsupported: parts stored")
expect.eq(result.error, nil, "unsupported: no error on success")
expect.eq(log.last(), "[OK] nanite_assembly_build -> /Game/Env/SM_Unsupported.SM_Unsupported (created) parts=1 nodes=1 nanite=true assembly=true "
	.. "registered=true compiled=true saved=false assemblies_supported=false")
headless.set_cvar("r.Nanite.AllowAssemblies", 1)

-- Without an asset registry the field is false, not missing.
headless.set_asset_registry_available(false)
result = build("/Game/Env/SM_NoRegistry")
expect.eq(result.ok, true, "no registry: built " .. tostring(result.error))
expect.eq(result.registered, false, "no registry: registered")
expect.eq(log.last(), "[OK] nanite_assembly_build -> /Game/Env/SM_NoRegistry.SM_NoRegistry (created) parts=1 nodes=1 nanite=true assembly=true "
	.. "registered=false compiled=true saved=false assemblies_supported=true")
headless.set_asset_registry_available(true)
