-- The messages of the expect library, whole: each failing check is caught by expect.error, which compares the
-- message without the "expect_test.lua:N: " that points at the line of the check.

-- eq: values, labels, and strings shown by their first differing line and column.
expect.eq(expect.eq(5, 5), 5, "eq returns what it checked")
expect.error(function() expect.eq(1, 2) end, "expected 2, got 1")
expect.error(function() expect.eq(1, 2, "count") end, "count: expected 2, got 1")
expect.error(function() expect.eq(nil, "a") end, 'expected "a", got nil')
expect.error(function() expect.eq("abc", "abd") end, 'strings differ at line 1, column 3\nexpected: "abd"\nactual:   "abc"')
expect.error(function() expect.eq("ab", "abc") end, 'strings differ at line 1, column 3\nexpected: "abc"\nactual:   "ab"')
expect.error(function() expect.eq("a", "a\n") end, 'strings differ at line 1, column 2\nexpected: "a\\n"\nactual:   "a"')
expect.error(function() expect.eq("x\ny\n\tz\1\"\\", "x\ny\n\tz\"") end,
	'strings differ at line 3, column 3\nexpected: "\\tz\\""\nactual:   "\\tz\\001\\"\\\\"')
expect.error(function() expect.eq("one\ntwo", "one\nthree", "text") end, 'text: strings differ at line 2, column 2\nexpected: "three"\nactual:   "two"')

-- near: inside the tolerance, its edge included.
expect.eq(expect.near(1.5, 1, 0.5), 1.5, "near returns what it checked")
expect.near(0.5, 1, 0.5)
expect.error(function() expect.near(1.5, 1, 0.25) end, "expected 1 within 0.25, got 1.5")
expect.error(function() expect.near(0.5, 1, 0.25, "x") end, "x: expected 1 within 0.25, got 0.5")
expect.error(function() expect.near("1", 1, 1) end, 'expected 1 within 1, got "1"')

-- match
expect.eq(expect.match("abc", "^ab"), "abc", "match returns what it checked")
expect.error(function() expect.match("abc", "^b") end, 'expected a string matching "^b", got "abc"')
expect.error(function() expect.match(nil, "x", "name") end, 'name: expected a string matching "x", got nil')

-- fields: exactly these, of these types, checked in the order of their names.
local t = { a = 1, b = "two" }
expect.eq(expect.fields(t, { a = "number", b = "string" }), t, "fields returns what it checked")
expect.error(function() expect.fields(nil, {}) end, "expected a table, got nil")
expect.error(function() expect.fields({}, { b = "string", a = "number" }) end, "field a: expected a number, got nil")
expect.error(function() expect.fields({ a = 1, b = 2 }, { a = "number", b = "string" }, "t") end, "t: field b: expected a string, got 2")
expect.error(function() expect.fields({ a = 1, c = true }, { a = "number" }) end, 'unexpected field "c"')

-- ok
local good = { ok = true }
expect.eq(expect.ok(good), good, "ok returns what it checked")
expect.error(function() expect.ok(nil) end, "expected a result table, got nil")
expect.error(function() expect.ok({ ok = false, error = "boom" }, "build") end, 'build: expected ok, got the error "boom"')
expect.error(function() expect.ok({}) end, "expected ok, got the error nil")

-- refused: the refusal's shape, its whole message and, given the verb, its log line.
local refusal = nanite_assembly_info("")
expect.eq(expect.refused(refusal, "static mesh not found: ", "nanite_assembly_info"), refusal, "refused returns what it checked")
expect.refused({ ok = false, error = "no" }, "no")
expect.error(function() expect.refused("no", "no") end, 'expected a refusal table, got "no"')
expect.error(function() expect.refused({ ok = true }, "no", nil, "r") end, "r: expected a refusal, got ok = true")
expect.error(function() expect.refused({ error = "no" }, "no") end, "expected a refusal, got ok = nil")
expect.error(function() expect.refused({ ok = false, error = "no", extra = 1 }, "no") end, 'unexpected field "extra" in a refusal')
expect.error(function() expect.refused({ ok = false, error = "nope" }, "no") end,
	'the refusal\'s error: strings differ at line 1, column 3\nexpected: "no"\nactual:   "nope"')
expect.error(function() expect.refused(refusal, "static mesh not found: ", "nanite_assembly_build") end,
	'the last log line: strings differ at line 1, column 24\nexpected: "[FAIL] nanite_assembly_build -> static mesh not found: "\n'
	.. 'actual:   "[FAIL] nanite_assembly_info -> static mesh not found: "')

-- error: the message with its position taken off, or as raised without one.
expect.eq(expect.error(function() error("gone") end, "gone"), "gone", "error returns the message")
expect.eq(expect.error(function() error("kept whole", 0) end), "kept whole", "a message without a position")
expect.error(function() expect.error(function() end) end, "expected an error, got none")
expect.error(function() expect.error(function() error("late") end, "soon", "e") end,
	'e: the error: strings differ at line 1, column 1\nexpected: "soon"\nactual:   "late"')

-- skip needs its reason.
expect.error(function() skip() end, "bad argument #1 to 'skip' (string expected, got no value)")
