-- Expectations for scenario scripts: every failed expectation is reported, and finish() raises when any
-- failed, so that cvai exits with status 1.
local expect = { failures = 0 }

local function show(value)
	if type(value) == "string" then
		return string.format("%q", value)
	end
	return tostring(value)
end

local function fail(what, message)
	expect.failures = expect.failures + 1
	io.stderr:write(string.format("FAILED %s: %s\n%s\n", what, message, debug.traceback("", 3)))
end

function expect.eq(actual, expected, what)
	if actual ~= expected then
		fail(what or "value", string.format("expected %s, got %s", show(expected), show(actual)))
	end
	return actual == expected
end

function expect.near(actual, expected, tolerance, what)
	if type(actual) ~= "number" or math.abs(actual - expected) > tolerance then
		fail(what or "value", string.format("expected %s within %s, got %s", show(expected), show(tolerance), show(actual)))
		return false
	end
	return true
end

function expect.truthy(value, what)
	if not value then
		fail(what or "value", "expected a true value, got " .. show(value))
	end
	return value
end

function expect.type(value, type_name, what)
	return expect.eq(type(value), type_name, (what or "value") .. " type")
end

-- A table with exactly these keys (a list of names), each of the given Lua type.
function expect.keys(tbl, keys_and_types, what)
	local seen = {}
	for _, entry in ipairs(keys_and_types) do
		local key, type_name = entry[1], entry[2]
		seen[key] = true
		expect.eq(type(tbl[key]), type_name, (what or "table") .. "." .. key .. " type")
	end
	for key in pairs(tbl) do
		if not seen[key] then
			fail(what or "table", "unexpected key " .. show(key))
		end
	end
end

-- The refusal table {ok=false, error=message} with nothing else, and its log line.
function expect.refused(result, message, verb, what)
	what = what or message
	expect.keys(result, { { "ok", "boolean" }, { "error", "string" } }, what .. " refusal")
	expect.eq(result.ok, false, what .. " ok")
	expect.eq(result.error, message, what .. " error")
	local lines = headless.log_lines()
	expect.eq(lines[#lines], "[FAIL] " .. verb .. " -> " .. message, what .. " log line")
end

-- The last log line of the session.
function expect.last_log(line, what)
	local lines = headless.log_lines()
	expect.eq(lines[#lines], line, what or "last log line")
end

function expect.finish()
	if expect.failures > 0 then
		error(expect.failures .. " expectation(s) failed", 0)
	end
end

return expect
