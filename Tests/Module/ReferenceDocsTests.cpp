// The reference of the verbs and of the headless table is held to what they really give back: the verbs run in
// every state that changes their tables, and each table is compared with its description both ways. A field
// written without a description, a description of a field no table has, a field missing where the description
// says it is always there, or a value of another type than described, fails here.
#include "Headless/HarnessLuaApi.h"
#include "Headless/StringUtils.h"
#include "Lua/NaniteAssemblyReferenceDocs.h"
#include "SessionTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

using namespace CVAI::NaniteAssembly;

namespace
{
	using UE::Headless::ToUtf8;

	// A description in the program's shape, so that the module's tables and the harness's are checked alike.
	struct FDescribedField
	{
		std::string LuaType;
		ENaniteAssemblyFieldPresence Presence = ENaniteAssemblyFieldPresence::Always;
	};
	using FDescribedTables = std::map<std::string, std::map<std::string, FDescribedField>>;

	FDescribedTables ModuleResultTables()
	{
		FDescribedTables Tables;
		for (const FNaniteAssemblyTableDoc& Table : GetNaniteAssemblyResultDocs())
		{
			for (const FNaniteAssemblyFieldDoc& Field : Table.Fields)
			{
				Tables[ToUtf8(Table.Name)][ToUtf8(Field.Name)] = { ToUtf8(Field.LuaType), Field.Presence };
			}
		}
		return Tables;
	}

	FDescribedTables HarnessTables()
	{
		FDescribedTables Tables;
		for (const UE::Headless::FLuaTableReference& Table : UE::Headless::GetHarnessTables())
		{
			for (const UE::Headless::FLuaFieldReference& Field : Table.Fields)
			{
				Tables[Table.Name][Field.Name] = { Field.LuaType,
					Field.bOptional ? ENaniteAssemblyFieldPresence::Optional : ENaniteAssemblyFieldPresence::Always };
			}
		}
		return Tables;
	}

	// Walks real tables against their descriptions, collecting every mismatch and every described field it met.
	class FTableChecker
	{
	public:
		explicit FTableChecker(FDescribedTables InTables)
			: Tables(std::move(InTables))
		{
		}

		// Checks the value at Index as the type LuaType; Place names it in the faults.
		void CheckValue(lua_State* L, int Index, const std::string& LuaType, const std::string& Place)
		{
			Index = lua_absindex(L, Index);
			if (LuaType.ends_with("?") || LuaType.find('|') != std::string::npos)
			{
				CheckAlternatives(L, Index, LuaType, Place);
			}
			else if (LuaType.size() > 2 && LuaType.ends_with("[]"))
			{
				CheckList(L, Index, LuaType.substr(0, LuaType.size() - 2), Place);
			}
			else if (Tables.contains(LuaType))
			{
				CheckTable(L, Index, LuaType, Place);
			}
			else if (!IsOfType(L, Index, LuaType))
			{
				Faults.push_back(Place + " is a " + TypeOf(L, Index) + ", described as " + LuaType);
			}
		}

		// Every described field that no table checked so far held.
		std::vector<std::string> NeverSeen() const
		{
			std::vector<std::string> Missing;
			for (const auto& [TableName, Fields] : Tables)
			{
				for (const auto& [FieldName, Field] : Fields)
				{
					if (!Seen.contains(TableName + "." + FieldName))
					{
						Missing.push_back(TableName + "." + FieldName);
					}
				}
			}
			return Missing;
		}

		std::vector<std::string> Faults;

	private:
		static std::string TypeOf(lua_State* L, int Index)
		{
			return lua_isinteger(L, Index) ? "integer" : lua_typename(L, lua_type(L, Index));
		}

		static bool IsOfType(lua_State* L, int Index, const std::string& LuaType)
		{
			if (LuaType == "integer")
			{
				return lua_isinteger(L, Index);
			}
			if (LuaType == "number")
			{
				return lua_type(L, Index) == LUA_TNUMBER;
			}
			return LuaType == lua_typename(L, lua_type(L, Index));
		}

		// "string?" is "string|nil"; the value must fit one of the alternatives.
		void CheckAlternatives(lua_State* L, int Index, const std::string& LuaType, const std::string& Place)
		{
			std::string Alternatives = LuaType.ends_with("?") ? LuaType.substr(0, LuaType.size() - 1) + "|nil" : LuaType;
			for (size_t Start = 0; Start <= Alternatives.size();)
			{
				const size_t End = std::min(Alternatives.find('|', Start), Alternatives.size());
				FTableChecker Alternative(Tables);
				Alternative.CheckValue(L, Index, Alternatives.substr(Start, End - Start), Place);
				if (Alternative.Faults.empty())
				{
					return;
				}
				Start = End + 1;
			}
			Faults.push_back(Place + " is a " + TypeOf(L, Index) + ", described as " + LuaType);
		}

		void CheckList(lua_State* L, int Index, const std::string& ElementType, const std::string& Place)
		{
			if (!lua_istable(L, Index))
			{
				Faults.push_back(Place + " is a " + TypeOf(L, Index) + ", described as a list of " + ElementType);
				return;
			}
			const lua_Integer Count = (lua_Integer)lua_rawlen(L, Index);
			lua_pushnil(L);
			while (lua_next(L, Index) != 0)
			{
				if (!lua_isinteger(L, -2) || lua_tointeger(L, -2) < 1 || lua_tointeger(L, -2) > Count)
				{
					Faults.push_back(Place + " has a key that is no list position");
				}
				else
				{
					CheckValue(L, -1, ElementType, Place + "[" + std::to_string(lua_tointeger(L, -2)) + "]");
				}
				lua_pop(L, 1);
			}
		}

		void CheckTable(lua_State* L, int Index, const std::string& TableName, const std::string& Place)
		{
			if (!lua_istable(L, Index))
			{
				Faults.push_back(Place + " is a " + TypeOf(L, Index) + ", described as " + TableName);
				return;
			}
			const std::map<std::string, FDescribedField>& Fields = Tables.at(TableName);
			lua_pushnil(L);
			while (lua_next(L, Index) != 0)
			{
				const std::string Key = lua_type(L, -2) == LUA_TSTRING ? lua_tostring(L, -2) : "(a key that is no name)";
				const auto Found = Fields.find(Key);
				if (Found == Fields.end())
				{
					Faults.push_back(Place + "." + Key + " is not described in " + TableName);
				}
				else
				{
					Seen.insert(TableName + "." + Key);
					CheckValue(L, -1, Found->second.LuaType, Place + "." + Key);
				}
				lua_pop(L, 1);
			}

			lua_getfield(L, Index, "ok");
			const bool bHasOk = lua_isboolean(L, -1);
			const bool bOk = lua_toboolean(L, -1) != 0;
			lua_pop(L, 1);
			for (const auto& [FieldName, Field] : Fields)
			{
				const bool bRequired = Field.Presence == ENaniteAssemblyFieldPresence::Always ||
					(bHasOk && bOk && Field.Presence == ENaniteAssemblyFieldPresence::WhenOk) ||
					(bHasOk && !bOk && Field.Presence == ENaniteAssemblyFieldPresence::WhenRefused);
				lua_getfield(L, Index, FieldName.c_str());
				if (bRequired && lua_isnil(L, -1))
				{
					Faults.push_back(Place + " has no " + FieldName + ", which " + TableName + " describes as always there in its case");
				}
				lua_pop(L, 1);
			}
		}

		FDescribedTables Tables;
		std::set<std::string> Seen;
	};

	class ReferenceDocsTest : public FSessionTest
	{
	protected:
		// Evaluates the expression in the session and checks the value as LuaType.
		void Check(FTableChecker& Checker, const std::string& Expression, const std::string& LuaType)
		{
			lua_State* L = Session->GetLuaState();
			const std::string Chunk = "return " + Expression;
			ASSERT_EQ(luaL_loadbuffer(L, Chunk.c_str(), Chunk.size(), "=check"), LUA_OK) << lua_tostring(L, -1);
			ASSERT_EQ(lua_pcall(L, 0, 1, 0), LUA_OK) << lua_tostring(L, -1);
			Checker.CheckValue(L, -1, LuaType, Expression);
			lua_pop(L, 1);
		}

		static std::string Join(const std::vector<std::string>& Lines)
		{
			std::string Text;
			for (const std::string& Line : Lines)
			{
				Text += Line + "\n";
			}
			return Text;
		}
	};

	TEST_F(ReferenceDocsTest, EveryVerbResultMatchesItsDescriptionBothWays)
	{
		FTableChecker Checker(ModuleResultTables());
		const std::string Cubes = "parts = { { mesh = '/Engine/BasicShapes/Cube', transforms = { {}, { location = { x = 100 } } } } }";

		Check(Checker, "nanite_assembly_support()", "NaniteAssemblySupportResult");
		ASSERT_EQ(Session->Run("headless.set_cvar('r.Nanite.AllowAssemblies', 0)"), "");
		Check(Checker, "nanite_assembly_support()", "NaniteAssemblySupportResult");
		// Without renderer support a build stands and carries a warning.
		Check(Checker, "nanite_assembly_build{ output = '/Game/Docs/SM_Unsupported', " + Cubes + " }", "NaniteAssemblyBuildResult");
		ASSERT_EQ(Session->Run("headless.set_cvar('r.Nanite.AllowAssemblies', 1)"), "");

		Check(Checker, "nanite_assembly_info('/Engine/BasicShapes/Cube')", "NaniteAssemblyInfoResult");
		Check(Checker, "nanite_assembly_info('/Game/Docs/SM_Missing')", "NaniteAssemblyInfoResult");
		Check(Checker, "nanite_assembly_build{ output = '/Game/Docs/SM_Built', save = true, " + Cubes + " }", "NaniteAssemblyBuildResult");
		Check(Checker, "nanite_assembly_info('/Game/Docs/SM_Built')", "NaniteAssemblyInfoResult");
		Check(Checker, "nanite_assembly_build{ output = '/Game/Docs/SM_Built', overwrite = true, wait_for_compile = false, " + Cubes + " }",
			"NaniteAssemblyBuildResult");
		Check(Checker, "nanite_assembly_info('/Game/Docs/SM_Built')", "NaniteAssemblyInfoResult");
		Check(Checker, "nanite_assembly_build{ output = '/Game/Docs/SM_Refused', parts = {} }", "NaniteAssemblyBuildResult");
		// A build that stood but whose save failed tells what the script now has in memory.
		ASSERT_EQ(Session->Run("headless.fail_next('SavePackages')"), "");
		Check(Checker, "nanite_assembly_build{ output = '/Game/Docs/SM_Unsaved', save = true, " + Cubes + " }", "NaniteAssemblyBuildResult");

		ASSERT_EQ(Session->Run("headless.set_plugin_enabled('NaniteAssemblyEditorUtils', false)"), "");
		Check(Checker, "nanite_assembly_support()", "NaniteAssemblySupportResult");
		Check(Checker, "nanite_assembly_build{ output = '/Game/Docs/SM_NoPlugin', " + Cubes + " }", "NaniteAssemblyBuildResult");

		EXPECT_EQ(Join(Checker.Faults), "");
		EXPECT_EQ(Join(Checker.NeverSeen()), "");
	}

	TEST_F(ReferenceDocsTest, HarnessResultTablesMatchTheirDescriptionsBothWays)
	{
		FTableChecker Checker(HarnessTables());
		ASSERT_EQ(Session->Run("assert(nanite_assembly_build{ output = '/Game/Docs/SM_Saved', save = true, "
							   "parts = { { mesh = '/Engine/BasicShapes/Cube', transforms = { {} } } } }.ok)"),
			"");
		Check(Checker, "headless.object_info('/Game/Docs/SM_Saved.SM_Saved')", "HeadlessObjectInfo");
		Check(Checker, "headless.saved_packages()", "HeadlessSavedPackage[]");
		// The options table is an argument: only its keys are checked.
		Check(Checker, "{ replace = true }", "HeadlessImportOptions");

		EXPECT_EQ(Join(Checker.Faults), "");
		EXPECT_EQ(Join(Checker.NeverSeen()), "");
	}

	// Each headless function gives back as many values as described, each of its described type.
	TEST_F(ReferenceDocsTest, HarnessFunctionsReturnWhatTheyDescribe)
	{
		// The arguments of the calls, in the order of the table; cancel_transaction finds none open after end_transaction.
		const std::map<std::string, std::string> Arguments = { { "get_cvar", "'r.Nanite.AllowAssemblies'" },
			{ "set_cvar", "'r.Nanite.AllowAssemblies', 1" }, { "set_plugin_enabled", "'NaniteAssemblyEditorUtils', true" },
			{ "set_editor_available", "true" }, { "set_asset_registry_available", "true" }, { "is_package_dirty", "'/Game/Docs/SM_Any'" },
			{ "package_file_exists", "'/Game/Docs/SM_Any'" }, { "object_info", "'/Engine/BasicShapes/Cube.Cube'" },
			{ "create_transient_mesh", "'SM_DocsTransient'" }, { "fail_next", "'NewObject'" }, { "import_mesh", "'/nowhere/Box.obj', '/Game/Docs/SM_Box'" } };
		FTableChecker Checker(HarnessTables());
		for (const UE::Headless::FHarnessFunction& Function : UE::Headless::GetHarnessFunctions())
		{
			const std::string Name = Function.Reference.Name;
			if (Name == "headless.cancel_transaction")
			{
				continue;
			}
			const auto Given = Arguments.find(Name.substr(std::string("headless.").size()));
			const std::string Call = Name + "(" + (Given == Arguments.end() ? "" : Given->second) + ")";
			ASSERT_EQ(Session->Run("Results = table.pack(" + Call + ")"), "");
			const std::vector<UE::Headless::FLuaReturnReference>& Returns = Function.Reference.Returns;
			EXPECT_EQ(Session->Eval("Results.n <= " + std::to_string(Returns.size())), "true") << Call;
			for (size_t Position = 0; Position < Returns.size(); ++Position)
			{
				Check(Checker, "Results[" + std::to_string(Position + 1) + "]", Returns[Position].LuaType);
			}
		}
		EXPECT_EQ(Join(Checker.Faults), "");
	}

	// The names a description gives to the keys of a table of the type LuaType, alternatives ("A|B") together.
	std::set<std::string> DescribedRequestKeys(const std::string& LuaType)
	{
		std::set<std::string> Keys;
		for (const FNaniteAssemblyTableDoc& Table : GetNaniteAssemblyRequestDocs())
		{
			if (("|" + LuaType + "|").find("|" + ToUtf8(Table.Name) + "|") != std::string::npos)
			{
				for (const FNaniteAssemblyFieldDoc& Field : Table.Fields)
				{
					Keys.insert(ToUtf8(Field.Name));
				}
			}
		}
		return Keys;
	}

	// The keys that the request reader lists when it refuses an unknown one: "...: unknown key 'bogus' (accepted: a|b)".
	std::set<std::string> AcceptedKeysIn(const std::string& Error)
	{
		const std::string Start = "(accepted: ";
		const size_t From = Error.find(Start);
		if (From == std::string::npos || !Error.ends_with(")"))
		{
			return { "no list of accepted keys in: " + Error };
		}
		std::set<std::string> Keys;
		std::string Key;
		for (const char Character : Error.substr(From + Start.size(), Error.size() - From - Start.size() - 1) + "|")
		{
			if (Character == '|')
			{
				Keys.insert(Key);
				Key.clear();
			}
			else
			{
				Key += Character;
			}
		}
		return Keys;
	}

	// Each table of a request is described with exactly the keys that the reader accepts at its place.
	TEST_F(ReferenceDocsTest, RequestDescriptionsNameExactlyTheKeysTheReaderAccepts)
	{
		const auto Request = [](const std::string& Transform, const std::string& PartExtra, const std::string& RequestExtra)
		{
			return "nanite_assembly_build{ output = '/Game/Docs/SM_Keys', " + RequestExtra + "parts = { { mesh = '/Engine/BasicShapes/Cube', " + PartExtra +
				"transforms = { " + Transform + " } } } }.error";
		};
		const std::pair<std::string, std::string> Places[] = {
			{ Request("{}", "", "bogus = 1, "), "NaniteAssemblyBuildRequest" },
			{ Request("{}", "bogus = 1, ", ""), "NaniteAssemblyPartRequest" },
			{ Request("{ bogus = 1 }", "", ""), "NaniteAssemblyTransform" },
			{ Request("{ location = { bogus = 1 } }", "", ""), "NaniteAssemblyVectorRequest" },
			{ Request("{ rotation = { bogus = 1 } }", "", ""), "NaniteAssemblyRotatorRequest|NaniteAssemblyVectorRequest" },
			{ Request("{ scale = { bogus = 1 } }", "", ""), "NaniteAssemblyVectorRequest" },
		};
		for (const auto& [Expression, LuaType] : Places)
		{
			EXPECT_EQ(AcceptedKeysIn(Session->Eval(Expression)), DescribedRequestKeys(LuaType)) << Expression;
		}
	}

	// The checker itself finds each kind of mismatch, so that a passing comparison above means something.
	TEST_F(ReferenceDocsTest, CheckerReportsUndescribedMissingAndMistypedFields)
	{
		const auto FaultsOf = [this](const std::string& Expression, const std::string& LuaType)
		{
			FTableChecker Checker(HarnessTables());
			Check(Checker, Expression, LuaType);
			return Join(Checker.Faults);
		};
		EXPECT_EQ(FaultsOf("{ package = '/Game/A', depth = 1.5 }", "HeadlessSavedPackage"),
			"{ package = '/Game/A', depth = 1.5 }.depth is a number, described as integer\n");
		EXPECT_EQ(FaultsOf("{ class = 'StaticMesh', flags = { 'RF_Public', 3 }, garbage = false, package = '/Game/A' }", "HeadlessObjectInfo"),
			"{ class = 'StaticMesh', flags = { 'RF_Public', 3 }, garbage = false, package = '/Game/A' }.flags[2] is a integer, described as string\n");
		EXPECT_EQ(FaultsOf("{ class = 'StaticMesh', flags = {}, garbage = false, package = '/Game/A', extra = 1 }", "HeadlessObjectInfo"),
			"{ class = 'StaticMesh', flags = {}, garbage = false, package = '/Game/A', extra = 1 }.extra is not described in HeadlessObjectInfo\n");
		EXPECT_EQ(FaultsOf("{ [4] = { package = '/Game/A', depth = 0 } }", "HeadlessSavedPackage[]"),
			"{ [4] = { package = '/Game/A', depth = 0 } } has a key that is no list position\n");
		EXPECT_EQ(FaultsOf("{ garbage = false }", "HeadlessObjectInfo"),
			"{ garbage = false } has no class, which HeadlessObjectInfo describes as always there in its case\n"
			"{ garbage = false } has no flags, which HeadlessObjectInfo describes as always there in its case\n"
			"{ garbage = false } has no package, which HeadlessObjectInfo describes as always there in its case\n");
		EXPECT_EQ(FaultsOf("'/Game/A'", "HeadlessObjectInfo"), "'/Game/A' is a string, described as HeadlessObjectInfo\n");
		EXPECT_EQ(FaultsOf("5", "string?"), "5 is a integer, described as string?\n");
		EXPECT_EQ(FaultsOf("true", "integer|string|nil"), "true is a boolean, described as integer|string|nil\n");
		EXPECT_EQ(FaultsOf("nil", "string?"), "");
		EXPECT_EQ(FaultsOf("'x'", "integer|string|nil"), "");
		EXPECT_EQ(FaultsOf("{ { package = '/Game/A', depth = 0 } }", "HeadlessObjectInfo|HeadlessSavedPackage[]"), "");
		EXPECT_EQ(FaultsOf("{ replace = true }", "HeadlessImportOptions"), "");
		EXPECT_EQ(FaultsOf("{}", "HeadlessImportOptions"), "");
	}
}
