-- The capability probe: its table, its reason texts and its log line, in every plugin and renderer state.
local log = require("Support.log")

local probe_keys = {
	ok = "boolean", available = "boolean", supported = "boolean", plugin = "string",
	plugin_enabled = "boolean", compiled_in = "boolean", engine_version = "string",
	min_version = "string", assemblies_supported = "boolean", reason = "string",
}

-- A fresh project enables the builder and sets r.Nanite.AllowAssemblies=1.
local s = nanite_assembly_support()
expect.fields(s, probe_keys, "support")
expect.eq(s.ok, true, "ok")
expect.eq(s.available, true, "available")
expect.eq(s.supported, true, "supported")
expect.eq(s.plugin_enabled, true, "plugin_enabled")
expect.eq(s.assemblies_supported, true, "assemblies_supported")
expect.eq(s.compiled_in, true, "compiled_in")
expect.eq(s.plugin, "NaniteAssemblyEditorUtils", "plugin")
expect.eq(s.reason, "ok", "reason")
expect.eq(s.min_version, "5.7", "min_version")
expect.match(s.engine_version, "^%d+%.%d+%.%d+$", "engine_version has three numbers")
expect.eq(log.last(), "[OK] nanite_assembly_support -> available=true, plugin_enabled=true, assemblies_supported=true")

-- Extra arguments change nothing.
local with_extras = nanite_assembly_support(1, "two", {}, nil, true)
expect.eq(with_extras.available, true, "extra arguments ignored")
expect.eq(#headless.log_lines(), 2, "one log line per call")

-- The renderer ignoring assemblies does not make the builder unavailable; the cvar is read afresh.
headless.set_cvar("r.Nanite.AllowAssemblies", 0)
s = nanite_assembly_support()
expect.eq(s.available, true, "available without assembly support")
expect.eq(s.supported, true, "supported without assembly support")
expect.eq(s.assemblies_supported, false, "assemblies_supported off")
expect.eq(s.reason, "ok (r.Nanite.AllowAssemblies=0: the asset stores the assembly but the built Nanite resource ignores it "
	.. "until the cvar is set in DefaultEngine.ini [ConsoleVariables])", "reason without assembly support")
expect.eq(log.last(), "[OK] nanite_assembly_support -> available=true, plugin_enabled=true, assemblies_supported=false")

-- r.Nanite.Foliage also turns assemblies on.
headless.set_cvar("r.Nanite.Foliage", 1)
expect.eq(nanite_assembly_support().assemblies_supported, true, "foliage turns assemblies on")
headless.set_cvar("r.Nanite.Foliage", 0)

headless.set_plugin_enabled("NaniteAssemblyEditorUtils", false)
s = nanite_assembly_support()
expect.fields(s, probe_keys, "support with the plugin off")
expect.eq(s.ok, true, "ok with the plugin off")
expect.eq(s.available, false, "available with the plugin off")
expect.eq(s.supported, false, "supported with the plugin off")
expect.eq(s.plugin_enabled, false, "plugin_enabled off")
expect.eq(s.compiled_in, true, "compiled_in with the plugin off")
expect.eq(s.reason, 'plugin_disabled: the NaniteAssemblyEditorUtils plugin is compiled in but not enabled for this project; '
	.. 'add {"Name": "NaniteAssemblyEditorUtils", "Enabled": true} to the .uproject Plugins list', "plugin_disabled reason")
expect.eq(log.last(), "[OK] nanite_assembly_support -> available=false, plugin_enabled=false, assemblies_supported=false")
