// The three forms of the reference that cvai docs writes: text, the README's Markdown and the Lua language
// server's definition file, which must load as Lua and declare every function a script can call.
#include "Headless/LuaReference.h"

#include <gtest/gtest.h>

#include <lua.hpp>

#include <memory>
#include <set>
#include <sstream>
#include <string>

namespace
{
	using namespace UE::Headless;

	// One function with a required and an optional argument and two results, and one table with an optional field
	// whose type has alternatives: every branch of every form.
	std::vector<FLuaReferenceSection> SmallReference()
	{
		FLuaReferenceSection Section;
		Section.Title = "Tools";
		Section.Introduction = "Small tools.";
		Section.Functions.push_back({ "tools.cut", { { "what", "string", false, "the thing" }, { "how", "CutOptions", true, "a|b" } },
			{ { "boolean", "done" }, { "string?", "why not" } }, "Cuts a thing." });
		Section.Functions.push_back({ "tools.stop", {}, {}, "Stops." });
		Section.Tables.push_back({ "CutOptions", "How to cut.",
			{ { "depth", "integer", false, "how deep", "" }, { "angle", "number|string", true, "the angle", "default 0" } } });
		return { Section, Section };
	}

	TEST(LuaReferenceFormatTest, TextListsFunctionsArgumentsResultsAndFields)
	{
		const std::string Section = "Tools\n"
									"\n"
									"Small tools.\n"
									"\n"
									"tools.cut(what, how?) -> boolean, string?\n"
									"    Cuts a thing.\n"
									"    what string: the thing\n"
									"    how (optional) CutOptions: a|b\n"
									"    returns boolean: done\n"
									"    returns string?: why not\n"
									"\n"
									"tools.stop()\n"
									"    Stops.\n"
									"\n"
									"CutOptions\n"
									"    How to cut.\n"
									"    depth integer: how deep\n"
									"    angle number|string (default 0): the angle\n";
		EXPECT_EQ(FormatLuaReferenceText(SmallReference()), Section + "\n" + Section);
	}

	TEST(LuaReferenceFormatTest, MarkdownEscapesBarsInsideTableCells)
	{
		const std::string Section = "### Tools\n"
									"\n"
									"Small tools.\n"
									"\n"
									"#### `tools.cut(what, how?)`\n"
									"\n"
									"Cuts a thing.\n"
									"\n"
									"| argument | type | meaning |\n"
									"|---|---|---|\n"
									"| `what` | `string` | the thing |\n"
									"| `how` (optional) | `CutOptions` | a\\|b |\n"
									"\n"
									"Returns:\n"
									"\n"
									"- `boolean`: done\n"
									"- `string?`: why not\n"
									"\n"
									"#### `tools.stop()`\n"
									"\n"
									"Stops.\n"
									"\n"
									"#### `CutOptions`\n"
									"\n"
									"How to cut.\n"
									"\n"
									"| field | type | when | meaning |\n"
									"|---|---|---|---|\n"
									"| `depth` | `integer` | always | how deep |\n"
									"| `angle` | `number\\|string` | default 0 | the angle |\n";
		EXPECT_EQ(FormatLuaReferenceMarkdown(SmallReference()), Section + "\n" + Section);
	}

	TEST(LuaReferenceFormatTest, LanguageServerFileAnnotatesClassesFieldsParametersAndResults)
	{
		std::vector<FLuaReferenceSection> Reference = SmallReference();
		Reference.resize(1);
		Reference[0].Functions[0].Description = "Cuts\na thing.";
		EXPECT_EQ(FormatLuaLanguageServerDefinitions(Reference),
			"---@meta\n"
			"-- Definitions of the functions a cvai script can call, for the Lua language server. Written by cvai docs --luals.\n"
			"\n"
			"-- Tools\n"
			"\n"
			"---How to cut.\n"
			"---@class CutOptions\n"
			"---@field depth integer how deep\n"
			"---@field angle? number|string the angle (default 0)\n"
			"\n"
			"---@class tools\n"
			"tools = {}\n"
			"\n"
			"---Cuts a thing.\n"
			"---@param what string the thing\n"
			"---@param how? CutOptions a|b\n"
			"---@return boolean # done\n"
			"---@return string? # why not\n"
			"function tools.cut(what, how) end\n"
			"\n"
			"---Stops.\n"
			"function tools.stop() end\n");
	}

	TEST(LuaReferenceFormatTest, DefinitionFileOfTheRealReferenceLoadsAsLuaAndDeclaresEveryFunction)
	{
		const std::vector<FLuaReferenceSection> Reference = GetLuaReference();
		const std::string Definitions = FormatLuaLanguageServerDefinitions(Reference);
		const std::unique_ptr<lua_State, decltype(&lua_close)> State(luaL_newstate(), &lua_close);
		lua_State* L = State.get();
		luaL_openlibs(L);
		ASSERT_EQ(luaL_loadbuffer(L, Definitions.data(), Definitions.size(), "=cvai.lua"), LUA_OK) << lua_tostring(L, -1);
		ASSERT_EQ(lua_pcall(L, 0, 0, 0), LUA_OK) << lua_tostring(L, -1);

		size_t Functions = 0;
		for (const FLuaReferenceSection& Section : Reference)
		{
			for (const FLuaFunctionReference& Function : Section.Functions)
			{
				const std::string Check = "return type(" + Function.Name + ")";
				ASSERT_EQ(luaL_dostring(L, Check.c_str()), LUA_OK);
				EXPECT_STREQ(lua_tostring(L, -1), "function") << Function.Name;
				lua_pop(L, 1);
				++Functions;
			}
		}
		EXPECT_EQ(Functions, 27u);

		// One line of each kind, whole, from the module's half and from the harness's.
		std::istringstream Lines(Definitions);
		std::set<std::string> Present;
		for (std::string Line; std::getline(Lines, Line);)
		{
			Present.insert(Line);
		}
		for (const char* Line : { "---@meta", "---@class NaniteAssemblyBuildResult",
				 "---@field warning? string the renderer ignores assemblies, so the built Nanite resource ignores the parts (when ok = true and "
				 "assemblies_supported = false)",
				 "---@field nodes? NaniteAssemblyNodeInfo[] the first 256 nodes, in the assembly's order (when ok = true)",
				 "---@param request NaniteAssemblyBuildRequest the parts, the output and the options, read strictly: an unknown key is refused",
				 "---@return NaniteAssemblyInfoResult # the result table", "function nanite_assembly_info(mesh_path) end",
				 "---@param enabled boolean its new state", "---@param skipped_calls? integer how many calls succeed before the one that fails (default 0)",
				 "---@return HeadlessObjectInfo|nil # the object's state; nil when no object has that path",
				 "function headless.fail_next(operation, reason, skipped_calls) end" })
		{
			EXPECT_TRUE(Present.contains(Line)) << Line;
		}
	}
}
