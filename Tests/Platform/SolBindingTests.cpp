// The sol2 subset: checked parameters and their error texts, exceptions, results and registry references.
#include <sol/sol.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace
{
	// The names GCC and Clang give the parameter types, as sol2's own demangling reads them.
#if defined(__clang__)
	const std::string StringType = "const std::basic_string<char> &";
	const std::string TableType = "sol::basic_table_core<false, sol::basic_reference<false>>";
#else
	const std::string StringType = "const std::__cxx11::basic_string<char>&";
	const std::string TableType = "sol::basic_table_core<false, sol::basic_reference<false> >";
#endif
	const std::string NotATable = "value is not a table or a userdata that can behave like one ";
	const std::string NotAnInteger = "not a numeric type that fits exactly an integer (number maybe has significant decimals)";
	const std::string NotConstructed = "value is not a table or a userdata that can behave like one (type check failed in constructor)";

	// Calls a global from C++ as a host would; returns the error text ("" on success), results stay pushed.
	std::string Call(lua_State* L, const char* Name, const std::function<int(lua_State*)>& Push, int Results = 0)
	{
		lua_getglobal(L, Name);
		if (lua_pcall(L, Push(L), Results, 0) == LUA_OK)
		{
			return "";
		}
		const std::string Message = lua_tostring(L, -1);
		lua_pop(L, 1);
		return Message;
	}

	int NoArguments(lua_State*)
	{
		return 0;
	}

	// Runs a chunk and returns its first result as text, or "error: ..." when it fails.
	std::string Eval(lua_State* L, const std::string& Code)
	{
		const int Top = lua_gettop(L);
		const bool bRan = luaL_loadbuffer(L, Code.data(), Code.size(), "=test") == LUA_OK && lua_pcall(L, 0, 1, 0) == LUA_OK;
		const std::string Result = (bRan ? "" : "error: ") + std::string(luaL_tolstring(L, -1, nullptr));
		lua_settop(L, Top);
		return Result;
	}

	// Freed registry slots hold the free-list links, which are integers; everything else is a live reference.
	int CountLiveReferences(lua_State* L)
	{
		int Live = 0;
		for (lua_Integer Index = 1; Index <= (lua_Integer)lua_rawlen(L, LUA_REGISTRYINDEX); ++Index)
		{
			Live += lua_rawgeti(L, LUA_REGISTRYINDEX, Index) != LUA_TNUMBER ? 1 : 0;
			lua_pop(L, 1);
		}
		return Live;
	}

	// Runs an action that may panic; returns the sol::error text thrown by the default panic handler, or "".
	// The handler's report on the error stream is set aside in Report when given.
	std::string PanicText(const std::function<void()>& Action, std::string* Report = nullptr)
	{
		std::string Text;
		testing::internal::CaptureStderr();
		try
		{
			Action();
		}
		catch (const sol::error& Error)
		{
			Text = Error.what();
		}
		const std::string Reported = testing::internal::GetCapturedStderr();
		if (Report)
		{
			*Report = Reported;
		}
		return Text;
	}

	std::string GPanicMessage;

	int RecordPanic(lua_State* L)
	{
		GPanicMessage = lua_tostring(L, -1);
		throw std::runtime_error("recorded");
	}

	int PushUserdata(lua_State* L, const char* MetatableName, bool bWithName)
	{
		lua_newuserdatauv(L, 8, 0);
		if (MetatableName)
		{
			luaL_newmetatable(L, MetatableName);
			if (!bWithName)
			{
				lua_pushnil(L);
				lua_setfield(L, -2, "__name");
			}
			lua_setmetatable(L, -2);
		}
		return 1;
	}
}

TEST(SolBinding, StringParametersAcceptOnlyStrings)
{
	sol::state Lua;
	lua_State* L = Lua.lua_state();
	std::string Seen;
	Lua.set_function("f1", [&Lua, &Seen](const std::string& Name) -> sol::table
	{
		Seen = Name;
		return Lua.create_table();
	});
	const std::string Addendum = "(bad argument into '" + TableType + "(" + StringType + ")')";

	// Extra arguments are ignored.
	EXPECT_EQ(Call(L, "f1", [](lua_State* S) { lua_pushstring(S, "rock"); lua_pushinteger(S, 1); return 2; }), "");
	EXPECT_EQ(Seen, "rock");
	EXPECT_EQ(Call(L, "f1", [](lua_State* S) { lua_pushinteger(S, 5); return 1; }), "stack index 1, expected string, received number: " + Addendum);
	EXPECT_EQ(Call(L, "f1", [](lua_State* S) { lua_pushnil(S); return 1; }), "stack index 1, expected string, received nil: " + Addendum);
	EXPECT_EQ(Call(L, "f1", &NoArguments), "stack index 1, expected string, received no value: " + Addendum);
	// A userdata is named by its metatable's __name: empty without one, "userdata" without a metatable.
	EXPECT_EQ(Call(L, "f1", [](lua_State* S) { return PushUserdata(S, "Headless.Widget", true); }), "stack index 1, expected string, received Headless.Widget: " + Addendum);
	EXPECT_EQ(Call(L, "f1", [](lua_State* S) { return PushUserdata(S, "Headless.Nameless", false); }), "stack index 1, expected string, received : " + Addendum);
	EXPECT_EQ(Call(L, "f1", [](lua_State* S) { return PushUserdata(S, nullptr, false); }), "stack index 1, expected string, received userdata: " + Addendum);
	// __name is read raw, and a number there names the userdata by its text.
	EXPECT_EQ(Call(L, "f1", [](lua_State* S)
	{
		PushUserdata(S, "Headless.Numbered", true);
		lua_getmetatable(S, -1);
		lua_pushinteger(S, 5);
		lua_setfield(S, -2, "__name");
		lua_pop(S, 1);
		return 1;
	}), "stack index 1, expected string, received 5: " + Addendum);
	EXPECT_EQ(Call(L, "f1", [](lua_State* S)
	{
		PushUserdata(S, "Headless.Borrowing", false);
		lua_getmetatable(S, -1);
		lua_newtable(S);
		lua_newtable(S);
		lua_pushstring(S, "Borrowed");
		lua_setfield(S, -2, "__name");
		lua_setfield(S, -2, "__index");
		lua_setmetatable(S, -2);
		lua_pop(S, 1);
		return 1;
	}), "stack index 1, expected string, received : " + Addendum);
	EXPECT_EQ(lua_gettop(L), 0);
}

TEST(SolBinding, TableParametersAcceptTablesAndFullUserdata)
{
	sol::state Lua;
	lua_State* L = Lua.lua_state();
	Lua.open_libraries();
	Lua.set_function("f2", [](sol::table Table, sol::this_state State) -> sol::table { return Table; });
	const std::string Addendum = "(bad argument into '" + TableType + "(" + TableType + ", sol::this_state)')";

	EXPECT_EQ(Call(L, "f2", [](lua_State* S) { lua_pushinteger(S, 5); return 1; }), "stack index 1, expected table, received number: " + NotATable + Addendum);
	EXPECT_EQ(Call(L, "f2", &NoArguments), "stack index 1, expected table, received no value: " + NotATable + Addendum);
	EXPECT_EQ(Call(L, "f2", [](lua_State* S) { lua_pushlightuserdata(S, S); return 1; }), "stack index 1, expected table, received userdata: " + NotATable + Addendum);
	EXPECT_EQ(Call(L, "f2", [](lua_State* S) { return PushUserdata(S, "Headless.Widget", true); }, 1), "");
	EXPECT_EQ(lua_type(L, -1), LUA_TUSERDATA);
	lua_settop(L, 0);
	// The same table comes back as the single result.
	EXPECT_EQ(Eval(L, "local t = {} local a, b = f2(t, 'extra') return tostring(a == t and b == nil and select('#', f2(t)) == 1)"), "true");

	// Through pcall there is no Lua caller to name; from Lua code its position leads the text.
	const std::string Expected = "stack index 1, expected table, received boolean: " + NotATable + Addendum;
	EXPECT_EQ(Eval(L, "return select(2, pcall(f2, true))"), Expected);
	EXPECT_EQ(Eval(L, "local ok, message = pcall(function() return f2(true) end) return message"), "test:1: " + Expected);
}

TEST(SolBinding, ParametersAreCheckedLeftToRightAndThisStateTakesNoSlot)
{
	sol::state Lua;
	lua_State* L = Lua.lua_state();
	lua_State* Received = nullptr;
	std::string Name;
	Lua.set_function("g", [&](const std::string& InName, sol::this_state State, sol::table Options)
	{
		Name = InName;
		Received = State;
	});
	const std::string Addendum = "(bad argument into 'void(" + StringType + ", sol::this_state, " + TableType + ")')";

	EXPECT_EQ(Call(L, "g", [](lua_State* S) { lua_pushinteger(S, 1); lua_pushinteger(S, 2); return 2; }), "stack index 1, expected string, received number: " + Addendum);
	EXPECT_EQ(Call(L, "g", [](lua_State* S) { lua_pushstring(S, "a"); lua_pushinteger(S, 2); return 2; }),
		"stack index 2, expected table, received number: " + NotATable + Addendum);
	EXPECT_EQ(Name, "");
	EXPECT_EQ(Call(L, "g", [](lua_State* S) { lua_pushstring(S, "ok"); lua_newtable(S); return 2; }), "");
	EXPECT_EQ(Name, "ok");
	EXPECT_EQ(Received, L);

	// Reference parameters take anything, a missing argument included; booleans take booleans only.
	Lua.set_function("kind", [](sol::object Value) { return static_cast<int>(Value.get_type()); });
	EXPECT_EQ(Call(L, "kind", &NoArguments, 1), "");
	EXPECT_EQ(lua_tointeger(L, -1), LUA_TNIL);
	Lua.set_function("flag", [](bool bValue) {});
	EXPECT_EQ(Call(L, "flag", [](lua_State* S) { lua_pushinteger(S, 1); return 1; }), "stack index 1, expected boolean, received number: (bad argument into 'void(bool)')");
	lua_settop(L, 0);
}

TEST(SolBinding, ExceptionsBecomeLuaErrorsWithTheirText)
{
	sol::state Lua;
	lua_State* L = Lua.lua_state();
	Lua.open_libraries();
	Lua.set_function("std_error", []() { throw std::runtime_error("boom"); });
	Lua.set_function("text_error", []() { throw "plain text"; });
	Lua.set_function("string_error", []() { throw std::string("string text"); });
	Lua.set_function("sol_error", []() { throw sol::error("bad"); });
	Lua.set_function("other_error", []() { throw 42; });
	testing::internal::CaptureStderr();
	EXPECT_EQ(Call(L, "std_error", &NoArguments), "boom");
	EXPECT_EQ(testing::internal::GetCapturedStderr(), "[sol2] An exception occurred: boom\n") << "every safety on reports exceptions";
	testing::internal::CaptureStderr();
	EXPECT_NO_THROW({
		EXPECT_EQ(Call(L, "text_error", &NoArguments), "plain text");
		EXPECT_EQ(Call(L, "string_error", &NoArguments), "string text");
		EXPECT_EQ(Call(L, "sol_error", &NoArguments), "lua: error: bad");
		EXPECT_EQ(Call(L, "other_error", &NoArguments), "caught (...) exception");
	});
	// No position is added, even when Lua code is the caller.
	EXPECT_EQ(Eval(L, "local ok, message = pcall(function() std_error() end) return message"), "boom");
	testing::internal::GetCapturedStderr();
	EXPECT_EQ(lua_gettop(L), 0);
}

TEST(SolBinding, ResultsReplaceTheArguments)
{
	sol::state Lua;
	lua_State* L = Lua.lua_state();
	Lua.open_libraries();
	Lua["make"] = [&Lua](int Value) -> sol::table
	{
		sol::table Table = Lua.create_table();
		Table[1] = Value;
		Table["name"] = std::string("made");
		return Table;
	};
	Lua.set_function("on_stack", [](sol::this_state State) -> sol::stack_table
	{
		lua_createtable(State, 0, 1);
		lua_pushinteger(State, 5);
		lua_setfield(State, -2, "n");
		return sol::stack_table(State, -1);
	});
	Lua.set_function("nothing", [](int) {});
	Lua.set_function("count", []() { return 3; });

	EXPECT_EQ(Eval(L, "local t, extra = make(7, 'x', 'y') return type(t) .. t[1] .. t.name .. tostring(extra) .. select('#', make(1, 2))"), "table7madenil1");
	EXPECT_EQ(Eval(L, "return select('#', on_stack(1, 2, 3)) .. on_stack(1, 2).n"), "15");
	EXPECT_EQ(Eval(L, "return select('#', nothing(1, 2)) .. math.type(count())"), "0integer");
	// With precision checks on, an integer parameter takes only a Lua integer: a number with decimals and
	// a numeric string are refused with the same text.
	EXPECT_EQ(Eval(L, "return select(2, pcall(make, 1.5))"), "stack index 1, expected number, received number: not a numeric type that fits exactly an integer "
		"(number maybe has significant decimals) (bad argument into '" + TableType + "(int)')");
	EXPECT_EQ(Eval(L, "return select(2, pcall(make, '7'))"), "stack index 1, expected number, received string: not a numeric type that fits exactly an integer "
		"(number maybe has significant decimals) (bad argument into '" + TableType + "(int)')");

	// A bound function is a C closure whose first upvalue is nil.
	lua_getglobal(L, "make");
	EXPECT_TRUE(lua_iscfunction(L, -1));
	EXPECT_NE(lua_getupvalue(L, -1, 1), nullptr);
	EXPECT_EQ(lua_type(L, -1), LUA_TNIL);
	lua_settop(L, 0);

	// Globals are assigned without bypassing _G's __newindex; lengths honour __len and round to nearest.
	Eval(L, "Assigned = {} setmetatable(_G, { __newindex = function(t, k, v) rawset(t, k, v) Assigned[#Assigned + 1] = k end })");
	Lua["via_proxy"] = []() { return 1; };
	Lua.set_function("via_set", []() { return 2; });
	Lua["plain"] = 7;
	EXPECT_EQ(Eval(L, "return table.concat(Assigned, ',') .. ' ' .. via_proxy() + via_set() + plain"), "via_proxy,via_set,plain 10");
	EXPECT_EQ(Lua.get<int>("plain"), 7);
}

TEST(SolBinding, LengthsHonourLenAndMustBeIntegers)
{
	sol::state Lua;
	lua_State* L = Lua.lua_state();
	Lua.open_libraries();
	Eval(L, "function Sized(n) return setmetatable({}, { __len = function() return n end }) end "
		"Two, Half, Low, Whole, Text = Sized(2), Sized(2.5), Sized(2.4), Sized(3.0), Sized('3')");
	EXPECT_EQ(Lua.get<sol::table>("Two").size(), 2u);
	EXPECT_EQ(Eval(L, "return #{ 1, 2, 3 }"), "3");
	const std::string Refused = "lua: error: stack index -1, expected number, received number: " + NotAnInteger + " ";
	EXPECT_EQ(PanicText([&] { Lua.get<sol::table>("Half").size(); }), Refused);
	EXPECT_EQ(lua_gettop(L), 0) << "the default panic handler clears the stack";
	EXPECT_EQ(PanicText([&] { Lua.get<sol::table>("Low").size(); }), Refused);
	EXPECT_EQ(PanicText([&] { Lua.get<sol::table>("Whole").size(); }), Refused);
	EXPECT_EQ(PanicText([&] { Lua.get<sol::table>("Text").size(); }), "lua: error: stack index -1, expected number, received string: " + NotAnInteger + " ");
	EXPECT_EQ(Lua.create_table().size(), 0u) << "the state is usable after a panic";
}

TEST(SolBinding, ValuesReadFromLuaAreChecked)
{
	sol::state Lua;
	lua_State* L = Lua.lua_state();
	Lua.open_libraries();
	Eval(L, "Count, Ratio, Name, Flag, Decimal, Digits = 4, 0.5, 'rock', true, 1.5, '7'");
	EXPECT_EQ(Lua.get<int>("Count"), 4);
	EXPECT_EQ(Lua.get<double>("Ratio"), 0.5);
	EXPECT_EQ(Lua.get<double>("Count"), 4.0);
	EXPECT_EQ(Lua.get<std::string>("Name"), "rock");
	EXPECT_TRUE(Lua.get<bool>("Flag"));
	EXPECT_EQ(lua_gettop(L), 0);

	// Outside any Lua call a misfit reaches the panic handler, which throws the text as sol::error.
	EXPECT_EQ(PanicText([&] { Lua.globals().get<int>("missing"); }), "lua: error: stack index -1, expected number, received nil: " + NotAnInteger + " ");
	EXPECT_EQ(PanicText([&] { Lua.get<int>("Decimal"); }), "lua: error: stack index -1, expected number, received number: " + NotAnInteger + " ");
	EXPECT_EQ(PanicText([&] { Lua.get<int>("Digits"); }), "lua: error: stack index -1, expected number, received string: " + NotAnInteger + " ");
	EXPECT_EQ(PanicText([&] { Lua.get<double>("Name"); }), "lua: error: stack index -1, expected number, received string: not a numeric type ");
	EXPECT_EQ(PanicText([&] { Lua.get<std::string>("Count"); }), "lua: error: stack index -1, expected string, received number");
	EXPECT_EQ(PanicText([&] { Lua.get<bool>("missing"); }), "lua: error: stack index -1, expected boolean, received nil");
	EXPECT_EQ(PanicText([&] { Lua.get<sol::table>("Name"); }), "lua: error: stack index -1, expected table, received string: " + NotConstructed);
	// A table taken from another reference is checked while it is pushed, at its absolute index.
	lua_pushboolean(L, 1);
	const sol::table FromObject = sol::make_object(L, Lua.create_table());
	EXPECT_EQ(lua_gettop(L), 1);
	EXPECT_EQ(PanicText([&] { sol::table Table = Lua.get<sol::object>("Count"); }), "lua: error: stack index 2, expected table, received number: " + NotConstructed);
	EXPECT_EQ(lua_gettop(L), 0);
	EXPECT_FALSE(Lua.get<sol::object>("missing").valid()) << "a reference takes anything";

	// Inside a call from Lua the same misfit is a Lua error, led by the position of a Lua caller.
	Lua.set_function("read_missing", [&Lua]() { return Lua.get<int>("missing"); });
	EXPECT_EQ(Eval(L, "return select(2, pcall(read_missing))"), "stack index -1, expected number, received nil: " + NotAnInteger + " ");
	EXPECT_EQ(Eval(L, "return select(2, pcall(function() return read_missing() end))"), "test:1: stack index -1, expected number, received nil: " + NotAnInteger + " ");

	// The panic is reported on the error stream; a panic without a text still throws, unreported.
	std::string Report;
	EXPECT_EQ(PanicText([&] { Lua.get<bool>("Count"); }, &Report), "lua: error: stack index -1, expected boolean, received number");
	EXPECT_EQ(Report, "[sol2] An error occurred and panic has been invoked: stack index -1, expected boolean, received number\n");
	EXPECT_EQ(PanicText([L] { lua_newtable(L); lua_error(L); }, &Report), "lua: error: An unexpected error occurred and panic has been invoked");
	EXPECT_EQ(Report, "");

	// A panic handler given to the state receives the same text.
	sol::state Recorded(&RecordPanic);
	EXPECT_THROW(Recorded.get<std::string>("missing"), std::runtime_error);
	EXPECT_EQ(GPanicMessage, "stack index -1, expected string, received nil");
	static_assert(std::is_convertible_v<std::string, sol::error>, "sol::error converts from its text");
}

TEST(SolBinding, StatesCarryTheirHandlersAsGlobals)
{
	sol::state Lua;
	lua_State* L = Lua.lua_state();
	Lua.open_libraries();
	EXPECT_EQ(Eval(L, "Handler = _G['sol.\xF0\x9F\x94\xA9'] return type(_G['sol.\xE2\x98\xA2\xE2\x98\xA2']) .. ' ' .. type(Handler)"), "userdata function");
	EXPECT_EQ(Eval(L, "return (Handler('boom'))"), "boom\nstack traceback:\n\ttest:1: in main chunk");
	EXPECT_EQ(Eval(L, "return (Handler(5))"), "An unknown error has triggered the default error handler\nstack traceback:\n\ttest:1: in main chunk");
}

TEST(SolBinding, LibrariesOpenUnderTheirOwnNames)
{
	sol::state Lua;
	Lua.open_libraries(sol::lib::base, sol::lib::string);
	EXPECT_EQ(Eval(Lua.lua_state(), "return tostring(base == _G) .. type(string.format) .. type(table)"), "truefunctionnil");
	static_assert(std::is_convertible_v<lua_State*, sol::state_view>, "a state view converts from the state it views");
}

TEST(SolBinding, ObjectsAreCheckedWhereTheyLive)
{
	sol::state Lua;
	lua_State* L = Lua.lua_state();
	// A reference to nil is only nil; a reference to nothing is not even that.
	const sol::object Nil = sol::make_object(L, sol::lua_nil);
	EXPECT_TRUE(Nil.is<sol::lua_nil_t>());
	EXPECT_FALSE(Nil.is<sol::object>());
	EXPECT_FALSE(sol::object().is<sol::lua_nil_t>());
	const sol::object Text = sol::make_object(L, "7");
	EXPECT_TRUE(Text.is<sol::object>());
	EXPECT_EQ(PanicText([&] { Text.as<int>(); }), "lua: error: stack index -1, expected number, received string: " + NotAnInteger + " ");

	// A stack object is checked at its own slot.
	lua_pushinteger(L, 1);
	lua_pushstring(L, "x");
	const sol::stack_object Slot(L, -1);
	EXPECT_TRUE(Slot.is<std::string>());
	EXPECT_FALSE(Slot.is<int>());
	EXPECT_EQ(Slot.as<std::string>(), "x");
	EXPECT_EQ(lua_gettop(L), 2);
	EXPECT_EQ(PanicText([&] { Slot.as<int>(); }), "lua: error: stack index 2, expected number, received string: " + NotAnInteger + " ");

	// A table handle is made only from a table or a userdata.
	lua_pushboolean(L, 1);
	EXPECT_EQ(PanicText([&] { sol::table Table(L, -1); }), "lua: error: stack index -1, expected table, received boolean: " + NotConstructed);
}

TEST(SolBinding, RegistryReferencesAreReleased)
{
	sol::state Lua;
	lua_State* L = Lua.lua_state();
	Lua.open_libraries();
	EXPECT_EQ(sol::reference().registry_index(), LUA_NOREF);
	lua_pushnil(L);
	const sol::reference Nil(L, -1);
	lua_pop(L, 1);
	EXPECT_EQ(sol::reference(Nil).registry_index(), LUA_REFNIL);

	const int Baseline = CountLiveReferences(L);
	{
		sol::table Table = Lua.create_table();
		sol::table Copy = Table;
		EXPECT_EQ(CountLiveReferences(L), Baseline + 2);
		EXPECT_TRUE(Copy == Table);
		sol::table Moved = std::move(Copy);
		Copy = Moved;
		Moved = Table;
		EXPECT_EQ(CountLiveReferences(L), Baseline + 3);
		Moved.reset();
		const sol::state_view View(L);
		EXPECT_EQ(CountLiveReferences(L), Baseline + 4);
		EXPECT_TRUE(sol::make_object(L, Table).is<sol::table>());
		EXPECT_EQ(PanicText([&] { Lua.globals().get<int>("missing_number"); }), "lua: error: stack index -1, expected number, received nil: " + NotAnInteger + " ");
	}
	EXPECT_EQ(CountLiveReferences(L), Baseline);

	// Tables through bound functions, argument errors and exceptions leave nothing behind.
	Lua.set_function("echo", [](sol::table Table) { return Table; });
	Lua.set_function("fail", [](sol::table Table, const std::string& Text) { throw std::runtime_error(Text); });
	testing::internal::CaptureStderr();
	EXPECT_EQ(Eval(L, "local t = {} for i = 1, 50 do echo(t) pcall(echo, i) pcall(fail, t, 'x') pcall(fail, t) end return #t"), "0");
	testing::internal::GetCapturedStderr();
	EXPECT_EQ(CountLiveReferences(L), Baseline);

	// A freed slot is taken again by the next reference.
	lua_newtable(L);
	const int Probe = luaL_ref(L, LUA_REGISTRYINDEX);
	luaL_unref(L, LUA_REGISTRYINDEX, Probe);
	EXPECT_EQ(Lua.create_table().registry_index(), Probe);
}

TEST(SolBinding, ClosingTheStateDestroysBoundCallables)
{
	const auto Token = std::make_shared<int>(4);
	{
		sol::state Lua;
		Lua.set_function("hold", [Token]() { return *Token; });
		Lua.set_function("drop", [Token]() { return *Token; });
		EXPECT_EQ(Token.use_count(), 3);
		// Collecting an unreachable function runs the callable's destructor.
		lua_pushnil(Lua.lua_state());
		lua_setglobal(Lua.lua_state(), "drop");
		lua_gc(Lua.lua_state(), LUA_GCCOLLECT);
		EXPECT_EQ(Token.use_count(), 2);
		const sol::table Kept = Lua.create_table();
	}
	EXPECT_EQ(Token.use_count(), 1);
}
