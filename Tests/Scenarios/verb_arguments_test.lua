-- The three globals, and the binding layer's argument checks that run before a verb body.

for _, name in ipairs({ "nanite_assembly_support", "nanite_assembly_info", "nanite_assembly_build" }) do
	expect.eq(type(_G[name]), "function", name .. " is a function")
end

local function raised(fn, ...)
	local ok, message = pcall(fn, ...)
	expect.eq(ok, false, "the call raises")
	return tostring(message)
end

-- The binding library's texts: "stack index N, expected T, received U: message", then an addendum naming the
-- bound function's result and argument types. Those type names are the compiler's own spelling, so only the
-- addendum's shape is checked.
local function argument_error(message, prefix, what)
	expect.eq(message:sub(1, #prefix), prefix, what .. " text")
	local addendum = message:sub(#prefix + 1)
	expect.match(addendum, "^%(bad argument into '[^']+%([^']*this_state%)'%)$", what .. " addendum")
end

argument_error(raised(nanite_assembly_info, 42), "stack index 1, expected string, received number: ", "info(42)")
argument_error(raised(nanite_assembly_info), "stack index 1, expected string, received no value: ", "info()")
argument_error(raised(nanite_assembly_info, nil), "stack index 1, expected string, received nil: ", "info(nil)")
expect.match(raised(nanite_assembly_info, {}), "bad argument", "info({}) mentions bad argument")

argument_error(raised(nanite_assembly_build, "x"),
	"stack index 1, expected table, received string: value is not a table or a userdata that can behave like one ", "build('x')")
argument_error(raised(nanite_assembly_build),
	"stack index 1, expected table, received no value: value is not a table or a userdata that can behave like one ", "build()")

-- Called from Lua code, the error carries the caller's position, as luaL_error adds it.
local ok, message = pcall(function() return nanite_assembly_info(7) end)
expect.eq(ok, false, "info(7) raises")
expect.match(tostring(message), "^verb_arguments_test%.lua:%d+: stack index 1, expected string, received number: ", "position prefix")

-- None of these reached a verb body, so nothing was logged.
expect.eq(#headless.log_lines(), 0, "no log line for argument errors")

-- Extra arguments after the checked one are ignored.
local result = nanite_assembly_info("/Engine/BasicShapes/Cube", 1, 2, 3)
expect.eq(result.ok, true, "extra arguments to info are ignored")
expect.eq(#headless.log_lines(), 1, "the verb body ran once")
