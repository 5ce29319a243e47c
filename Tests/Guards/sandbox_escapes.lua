-- Run by Tests/Cli/guards.sh with --sandbox, from this folder, on a fresh project that holds the links "escape" (to
-- the test's scratch folder) and "dangling" (to a file not yet made there). Every way out of the sandbox is refused
-- with one whole message; what stays allowed still works. Prints "sandbox held" when every check passed.
local failures = {}

local function check(name, got, want)
	if got ~= want then
		failures[#failures + 1] = name .. ":\n  got  " .. tostring(got) .. "\n  want " .. tostring(want)
	end
end

-- The call raises exactly Want, after the position of the call in this file when the refusal has one.
local function refused(name, fn, want)
	local ok, message = pcall(fn)
	if ok then
		failures[#failures + 1] = name .. ": was not refused"
		return
	end
	check(name, (message:gsub("^sandbox_escapes%.lua:%d+: ", "", 1)), want)
end

local project = headless.project_dir()
local outside = project .. "escape/"

-- Functions that run programs, end the process, touch files behind io's back or load native code.
local gone = {
	{ "os.execute", function() os.execute("true") end, "it runs shell commands" },
	{ "os.exit", function() os.exit(0) end, "it ends the editor's process" },
	{ "os.remove", function() os.remove(project .. "Config/DefaultEngine.ini") end, "it deletes files" },
	{ "os.rename", function() os.rename(project .. "a", project .. "b") end, "it moves files" },
	{ "os.tmpname", function() os.tmpname() end, "it makes files outside the project" },
	{ "io.popen", function() io.popen("true") end, "it runs shell commands" },
	{ "package.loadlib", function() package.loadlib("libc.so.6", "*") end, "it loads native code" },
}
for _, case in ipairs(gone) do
	refused(case[1], case[2], case[1] .. ": not allowed in the sandbox (" .. case[3] .. ")")
end

-- Of the debug library only traceback is left, under either name of the library.
for _, name in ipairs({ "getinfo", "sethook", "getregistry", "getlocal", "setupvalue", "setmetatable", "upvalueid" }) do
	refused("debug." .. name, function() debug[name]() end, "debug." .. name .. ": not allowed in the sandbox (only debug.traceback is left in the sandbox)")
end
check("require('debug')", require("debug"), debug)
check("debug.traceback", (debug.traceback("here"):match("^here\nstack traceback:\n")), "here\nstack traceback:\n")

-- Precompiled chunks, as a string, from a reader, from a file.
local binary = string.dump(function() return 1 end)
refused("load binary", function() load(binary) end, "load: precompiled chunks are not allowed in the sandbox")
refused("load binary, mode b", function() load(binary, "chunk", "b") end, "load: precompiled chunks are not allowed in the sandbox")
local given = false
local chunk, message = load(function() if given then return nil end given = true return binary end, "reader", "bt")
check("load binary from a reader", message, "attempt to load a binary chunk (mode is 't')")
check("load binary from a reader gives no chunk", chunk, nil)
check("load text", load("return 40 + 2")(), 42)
check("load text with an environment", load("return x", "env", "t", { x = 7 })(), 7)
local file = assert(io.open(project .. "chunk.luac", "wb"))
file:write(binary)
file:close()
refused("loadfile binary", function() loadfile(project .. "chunk.luac") end, "loadfile: precompiled chunks are not allowed in the sandbox")
refused("dofile binary", function() dofile(project .. "chunk.luac") end, "dofile: precompiled chunks are not allowed in the sandbox")

-- Native modules: the C searchers are gone, and package.cpath is empty.
check("package.cpath", package.cpath, "")
package.path = project .. "?.lua"
file = assert(io.open(project .. "native.so", "w"))
file:write("not a library")
file:close()
package.cpath = project .. "?.so"
refused("require a native module", function() require("native") end,
	"module 'native' not found:\n\tno field package.preload['native']\n\tno file '" .. project .. "native.lua'\n\tno native module: the sandbox loads none")

-- Files: read in the project and this script's folder, written only in the project; links and ".." are resolved.
local function refusedRead(name, fn, path, func)
	refused(name, fn, func .. ": '" .. path .. "' is outside the project folder and the script's folder")
end
local function refusedWrite(name, fn, path, func)
	refused(name, fn, func .. ": '" .. path .. "' cannot be written: the sandbox writes only inside the project folder")
end
refusedRead("io.open /etc/passwd", function() io.open("/etc/passwd") end, "/etc/passwd", "io.open")
refusedRead("io.open through ..", function() io.open(project .. "Content/../../secret.txt") end, project .. "Content/../../secret.txt", "io.open")
refusedRead("io.open through a link", function() io.open(outside .. "secret.txt") end, outside .. "secret.txt", "io.open")
refusedWrite("io.open write through a link", function() io.open(outside .. "made.txt", "w") end, outside .. "made.txt", "io.open")
refusedWrite("io.open write through a dangling link", function() io.open(project .. "dangling", "a") end, project .. "dangling", "io.open")
refusedWrite("io.open write in the script's folder", function() io.open("written_by_sandbox.txt", "w") end, "written_by_sandbox.txt", "io.open")
refusedWrite("io.open r+ in the script's folder", function() io.open("sandbox_escapes.lua", "r+") end, "sandbox_escapes.lua", "io.open")
refusedRead("io.lines", function() io.lines(outside .. "secret.txt") end, outside .. "secret.txt", "io.lines")
refusedRead("io.input", function() io.input(outside .. "secret.txt") end, outside .. "secret.txt", "io.input")
refusedWrite("io.output", function() io.output(outside .. "made.txt") end, outside .. "made.txt", "io.output")
refusedRead("loadfile", function() loadfile(outside .. "secret.txt") end, outside .. "secret.txt", "loadfile")
refusedRead("dofile", function() dofile(outside .. "secret.txt") end, outside .. "secret.txt", "dofile")
package.path = outside .. "?.txt"
refusedRead("require", function() require("secret") end, outside .. "secret.txt", "require")

check("read in the script's folder", io.open("sandbox_escapes.lua"):read("l"), "-- Run by Tests/Cli/guards.sh with --sandbox, from this folder, on a fresh project that holds the links \"escape\" (to")
file = assert(io.open(project .. "Saved/note.txt", "w"))
file:write("kept\n")
file:close()
check("write and read in the project", io.open(project .. "Saved/note.txt"):read("a"), "kept\n")
check("io.lines in the project", io.lines(project .. "Saved/note.txt")(), "kept")
io.input(project .. "Saved/note.txt")
check("io.input in the project", io.read("l"), "kept")
io.input():close()
io.input(io.stdin)
io.output(project .. "Saved/out.txt")
io.write("through io.output\n")
io.output():close()
io.output(io.stdout)
check("io.output in the project", io.open(project .. "Saved/out.txt"):read("a"), "through io.output\n")
file = assert(io.open(project .. "helper.lua", "w"))
file:write("return { answer = 42 }\n")
file:close()
package.path = project .. "?.lua"
check("require in the project", require("helper").answer, 42)
check("dofile in the project", dofile(project .. "helper.lua").answer, 42)
check("loadfile in the project", loadfile(project .. "helper.lua")().answer, 42)

-- The verbs and the harness work as without the sandbox.
check("support", nanite_assembly_support().available, true)
local result = nanite_assembly_build{ parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = { {} } } }, output = "/Game/Sandboxed", save = true }
check("build", result.ok, true)
check("saved", headless.package_file_exists("/Game/Sandboxed"), true)
check("info", nanite_assembly_info("/Game/Sandboxed").part_count, 1)
check("undo", headless.undo(), true)

if #failures > 0 then
	error(#failures .. " sandbox checks failed:\n" .. table.concat(failures, "\n"), 0)
end
print("sandbox held")
