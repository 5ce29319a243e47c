-- The assertions of a script run by cvai test, the global 'expect'. The first one that fails stops the script with
-- one message that says what was expected and what came instead, at the line of the script that asked. Each takes
-- an optional last argument 'what', a label put before the message.
local expect = {}

-- Strings are shown quoted with their control characters escaped, so that a stray space or newline is seen.
local escapes = { ["\n"] = "\\n", ["\r"] = "\\r", ["\t"] = "\\t", ['"'] = '\\"', ["\\"] = "\\\\" }

local function show(value)
	if type(value) ~= "string" then
		return tostring(value)
	end
	return '"' .. value:gsub('[%c"\\]', function(c) return escapes[c] or string.format("\\%03d", c:byte()) end) .. '"'
end

local function label(what)
	return what and (what .. ": ") or ""
end

-- Raised from an assertion called by the script: level 3 is the script's line.
local function fail(what, message)
	error(label(what) .. message, 3)
end

-- The line of text that holds byte 'at' (a newline belongs to the line it ends).
local function line_at(text, line_start)
	return text:match("^[^\n]*\n?", line_start)
end

-- Where two different strings first differ, and their lines there.
local function compare_strings(expected, actual)
	local at = 1
	while at <= #expected and expected:byte(at) == actual:byte(at) do
		at = at + 1
	end
	local same = expected:sub(1, at - 1)
	local _, newlines = same:gsub("\n", "")
	local line_start = same:match(".*\n()") or 1
	return string.format("strings differ at line %d, column %d\nexpected: %s\nactual:   %s", newlines + 1, at - line_start + 1,
		show(line_at(expected, line_start)), show(line_at(actual, line_start)))
end

local function difference(expected, actual)
	if type(expected) == "string" and type(actual) == "string" then
		return compare_strings(expected, actual)
	end
	return "expected " .. show(expected) .. ", got " .. show(actual)
end

function expect.eq(actual, expected, what)
	if actual ~= expected then
		fail(what, difference(expected, actual))
	end
	return actual
end

function expect.near(actual, expected, tolerance, what)
	if type(actual) ~= "number" or not (math.abs(actual - expected) <= tolerance) then
		fail(what, string.format("expected %s within %s, got %s", show(expected), show(tolerance), show(actual)))
	end
	return actual
end

-- A string in which the Lua pattern is found.
function expect.match(actual, pattern, what)
	if type(actual) ~= "string" or not actual:find(pattern) then
		fail(what, "expected a string matching " .. show(pattern) .. ", got " .. show(actual))
	end
	return actual
end

-- A table with exactly these fields, each of its Lua type: expect.fields(t, { ok = "boolean", error = "string" }).
function expect.fields(actual, types, what)
	if type(actual) ~= "table" then
		fail(what, "expected a table, got " .. show(actual))
	end
	local names = {}
	for name in pairs(types) do
		names[#names + 1] = name
	end
	table.sort(names)
	for _, name in ipairs(names) do
		if type(actual[name]) ~= types[name] then
			fail(what, string.format("field %s: expected a %s, got %s", name, types[name], show(actual[name])))
		end
	end
	for name in pairs(actual) do
		if types[name] == nil then
			fail(what, "unexpected field " .. show(name))
		end
	end
	return actual
end

-- A verb's result that succeeded; otherwise its error is the message.
function expect.ok(result, what)
	if type(result) ~= "table" then
		fail(what, "expected a result table, got " .. show(result))
	end
	if result.ok ~= true then
		fail(what, "expected ok, got the error " .. show(result.error))
	end
	return result
end

-- A verb's refusal: exactly { ok = false, error = message }. With the verb's name, the session's last log line
-- must also be the refusal's: "[FAIL] verb -> message".
function expect.refused(result, message, verb, what)
	if type(result) ~= "table" then
		fail(what, "expected a refusal table, got " .. show(result))
	end
	if result.ok ~= false then
		fail(what, "expected a refusal, got ok = " .. show(result.ok))
	end
	for name in pairs(result) do
		if name ~= "ok" and name ~= "error" then
			fail(what, "unexpected field " .. show(name) .. " in a refusal")
		end
	end
	if result.error ~= message then
		fail(what, "the refusal's error: " .. difference(message, result.error))
	end
	if verb then
		local lines = headless.log_lines()
		local logged, wanted = lines[#lines], "[FAIL] " .. verb .. " -> " .. message
		if logged ~= wanted then
			fail(what, "the last log line: " .. difference(wanted, logged))
		end
	end
	return result
end

-- A function that raises an error; with a message, the error's text without the "chunk:line: " that error()
-- puts before it must be exactly that. Returns the error's text.
function expect.error(fn, message, what)
	local succeeded, raised = pcall(fn)
	if succeeded then
		fail(what, "expected an error, got none")
	end
	local text = type(raised) == "string" and raised:gsub("^[^\n]-:%d+: ", "", 1) or raised
	if message ~= nil and text ~= message then
		fail(what, "the error: " .. difference(message, text))
	end
	return text
end

return expect
