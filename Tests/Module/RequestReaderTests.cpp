// The request reader as a piece: the values it produces, the Lua stack and registry it leaves as found,
// proxies read through their metamethods, and a script's own errors handed back.
#include "Headless/StringUtils.h"
#include "Request/NaniteAssemblyBuildRequest.h"

#include <gtest/gtest.h>

#include <sol/sol.hpp>

#include <string>

using namespace CVAI::NaniteAssembly;

namespace
{
	using UE::Headless::ToUtf8;

	int32 CountRegistryEntries(lua_State* L)
	{
		int32 Count = 0;
		lua_pushnil(L);
		while (lua_next(L, LUA_REGISTRYINDEX) != 0)
		{
			++Count;
			lua_pop(L, 1);
		}
		return Count;
	}

	class RequestReaderTest : public ::testing::Test
	{
	protected:
		RequestReaderTest()
		{
			Lua.open_libraries();
			L = Lua.lua_state();
		}

		// Pushes the value of a Lua expression.
		void Push(const std::string& Expression)
		{
			const std::string Chunk = "return " + Expression;
			ASSERT_EQ(luaL_loadbuffer(L, Chunk.c_str(), Chunk.size(), "=request"), LUA_OK) << lua_tostring(L, -1);
			ASSERT_EQ(lua_pcall(L, 0, 1, 0), LUA_OK) << lua_tostring(L, -1);
		}

		// Reads a request, checking that the stack and the registry are as they were afterwards.
		bool Read(const std::string& Expression, FNaniteAssemblyBuildRequest& OutRequest, std::string& OutError)
		{
			Push(Expression);
			sol::table Argument(L, -1);
			lua_pop(L, 1);
			const int Top = lua_gettop(L);
			const int32 Registered = CountRegistryEntries(L);
			FString Error;
			const bool bRead = ReadBuildRequest(Argument, OutRequest, Error);
			EXPECT_EQ(lua_gettop(L), Top) << Expression;
			EXPECT_EQ(CountRegistryEntries(L), Registered) << Expression;
			EXPECT_EQ(bRead, Error.IsEmpty()) << "a message exactly when refused: " << Expression;
			OutError = ToUtf8(Error);
			return bRead;
		}

		std::string ReadError(const std::string& Expression)
		{
			FNaniteAssemblyBuildRequest Request;
			std::string Error;
			EXPECT_FALSE(Read(Expression, Request, Error)) << Expression;
			return Error;
		}

		sol::state Lua;
		lua_State* L = nullptr;
	};

	const char* const Cube = "'/Engine/BasicShapes/Cube'";
}

TEST_F(RequestReaderTest, ReadsEveryFieldInListOrder)
{
	FNaniteAssemblyBuildRequest Request;
	std::string Error;
	ASSERT_TRUE(Read(std::string("{ output = 'Out/SM_A', overwrite = true, save = true, wait_for_compile = false, parts = {"
								 "{ mesh = 'Meshes/SM_First', transforms = { {}, { location = { x = 3, y = 2.5 }, scale = 2 } }, material_merge = 'Slot_Names',"
								 "  material_overrides = { '/Game/M_B', '/Game/M_A' } },"
								 "{ mesh = ") + Cube + ", transforms = { { rotation = { x = 30 } } }, material_merge = 'material_indices' } } }",
		Request, Error))
		<< Error;
	EXPECT_EQ(ToUtf8(Request.Output), "Out/SM_A");
	EXPECT_TRUE(Request.bOverwrite);
	EXPECT_TRUE(Request.bSave);
	EXPECT_FALSE(Request.bWaitForCompile);
	ASSERT_EQ(Request.Parts.Num(), 2);

	const FNaniteAssemblyPartRequest& First = Request.Parts[0];
	EXPECT_EQ(ToUtf8(First.MeshPath), "Meshes/SM_First");
	EXPECT_EQ(First.MaterialMerge, ENaniteAssemblyMergeMode::SlotNames);
	ASSERT_EQ(First.MaterialOverrides.Num(), 2);
	EXPECT_EQ(ToUtf8(First.MaterialOverrides[0]), "/Game/M_B");
	EXPECT_EQ(ToUtf8(First.MaterialOverrides[1]), "/Game/M_A");
	ASSERT_EQ(First.Transforms.Num(), 2);
	EXPECT_TRUE(First.Transforms[0].Equals(FTransform::Identity, 0.0));
	EXPECT_EQ(First.Transforms[1].GetTranslation(), FVector(3.0, 2.5, 0.0));
	EXPECT_EQ(First.Transforms[1].GetScale3D(), FVector(2.0, 2.0, 2.0));

	// Euler x is roll: the very quaternion the engine's rotator gives.
	const FNaniteAssemblyPartRequest& Second = Request.Parts[1];
	EXPECT_EQ(Second.MaterialMerge, ENaniteAssemblyMergeMode::MaterialIndices);
	EXPECT_EQ(Second.Transforms[0].GetRotation(), FRotator(0.0, 0.0, 30.0).Quaternion());
}

TEST_F(RequestReaderTest, APartOfManyTransformsIsReadInConstantStackSpace)
{
	// Each transform's fields are gathered on the stack and dropped before the next: a part of 400,000 transforms
	// would need more than Lua's whole stack otherwise.
	FNaniteAssemblyBuildRequest Request;
	std::string Error;
	ASSERT_TRUE(Read(std::string("(function() local t = {} for i = 1, 400000 do t[i] = { location = { x = i } } end "
								 "return { output = 'Out/SM_Many', parts = { { mesh = ") + Cube + ", transforms = t } } } end)()",
		Request, Error))
		<< Error;
	ASSERT_EQ(Request.Parts.Num(), 1);
	ASSERT_EQ(Request.Parts[0].Transforms.Num(), 400000);
	EXPECT_EQ(Request.Parts[0].Transforms.Last().GetTranslation(), FVector(400000.0, 0.0, 0.0));
}

TEST_F(RequestReaderTest, DefaultsAndBothRotationNotationsGiveTheEngineQuaternion)
{
	FNaniteAssemblyBuildRequest Request;
	std::string Error;
	ASSERT_TRUE(Read(std::string("{ output = '', parts = { { mesh = ") + Cube
			+ ", transforms = { { rotation = { yaw = 90 } }, { rotation = { z = 90 } }, { rotation = { pitch = 10, yaw = -20, roll = 370 } },"
			  " { rotation = { x = 370, y = 10, z = -20 } }, { translation = { z = 5 }, location = { x = 1 } } } } } }",
		Request, Error))
		<< Error;
	EXPECT_EQ(ToUtf8(Request.Output), "");
	EXPECT_FALSE(Request.bOverwrite);
	EXPECT_FALSE(Request.bSave);
	EXPECT_TRUE(Request.bWaitForCompile);
	const TArray<FTransform>& Transforms = Request.Parts[0].Transforms;
	EXPECT_EQ(Transforms[0].GetRotation(), Transforms[1].GetRotation());
	EXPECT_EQ(Transforms[0].GetRotation(), FRotator(0.0, 90.0, 0.0).Quaternion());
	EXPECT_EQ(Transforms[2].GetRotation(), Transforms[3].GetRotation());
	EXPECT_EQ(Transforms[2].GetRotation(), FRotator(10.0, -20.0, 370.0).Quaternion());
	EXPECT_EQ(Transforms[4].GetTranslation(), FVector(1.0, 0.0, 0.0));
	EXPECT_EQ(Request.Parts[0].MaterialMerge, ENaniteAssemblyMergeMode::IdenticalMaterials);
}

TEST_F(RequestReaderTest, ProxiesAreReadThroughIndexAndLen)
{
	FNaniteAssemblyBuildRequest Request;
	std::string Error;
	const std::string Part = std::string("{ mesh = ") + Cube + ", transforms = { {} } }";

	// A proxy argument has no keys of its own to check; its fields come through __index.
	ASSERT_TRUE(Read("setmetatable({}, { __index = { output = '/Game/P', parts = { " + Part + " } } })", Request, Error)) << Error;
	EXPECT_EQ(ToUtf8(Request.Output), "/Game/P");
	EXPECT_EQ(Request.Parts.Num(), 1);

	// Lists whose length and elements come from metamethods.
	Request = FNaniteAssemblyBuildRequest();
	ASSERT_TRUE(Read("{ output = '/Game/P', parts = setmetatable({}, { __len = function() return 3 end, __index = function(_, i) return " + Part + " end }) }",
		Request, Error))
		<< Error;
	EXPECT_EQ(Request.Parts.Num(), 3);

	// A location table whose fields come from __index: the raw key walk finds nothing unknown.
	Request = FNaniteAssemblyBuildRequest();
	ASSERT_TRUE(Read(std::string("{ output = '/Game/P', parts = { { mesh = ") + Cube
			+ ", transforms = { { location = setmetatable({}, { __index = function(_, k) return k == 'y' and 7 or nil end }) } } } } }",
		Request, Error))
		<< Error;
	EXPECT_EQ(Request.Parts[0].Transforms[0].GetTranslation(), FVector(0.0, 7.0, 0.0));

	// A table with fields of its own and a metatable: its fields are looked up one by one as the reading
	// comes to them, so __index is asked only for what the table lacks, in reading order (translation
	// only where location is absent; the rotation form test asks all six keys, then the chosen three are
	// read again).
	Request = FNaniteAssemblyBuildRequest();
	const std::string Recorder = "{ __index = function(_, k) Asked = (Asked or '') .. k .. ',' return k == 'scale' and 2 or nil end }";
	ASSERT_TRUE(Read(std::string("{ output = '/Game/P', parts = { { mesh = ") + Cube + ", transforms = { setmetatable({ location = { x = 1 } }, " + Recorder
			+ "), setmetatable({ rotation = setmetatable({ yaw = 5 }, " + Recorder + ") }, " + Recorder + ") } } } }",
		Request, Error))
		<< Error;
	EXPECT_EQ(Request.Parts[0].Transforms[0].GetTranslation(), FVector(1.0, 0.0, 0.0));
	EXPECT_EQ(Request.Parts[0].Transforms[0].GetScale3D(), FVector(2.0, 2.0, 2.0));
	EXPECT_EQ(Request.Parts[0].Transforms[1].GetRotation(), FRotator(0.0, 5.0, 0.0).Quaternion());
	lua_getglobal(L, "Asked");
	EXPECT_EQ(std::string(lua_tostring(L, -1)), "rotation,scale,location,translation,pitch,roll,x,y,z,pitch,roll,scale,");
	lua_pop(L, 1);

	// A fault ends the reading before later fields are looked up: a failing __index is never reached.
	const std::string Boom = "{ __index = function(_, k) error('boom ' .. k, 0) end }";
	EXPECT_EQ(ReadError(std::string("{ output = '/Game/P', parts = { { mesh = ") + Cube + ", transforms = { setmetatable({ location = 5 }, " + Boom + ") } } } }"),
		"nanite_assembly_build parts[1].transforms[1]: 'location' must be a table {x,y,z}");
	EXPECT_EQ(ReadError(std::string("{ output = '/Game/P', parts = { { mesh = ") + Cube + ", transforms = { { location = setmetatable({ x = '1' }, " + Boom
				  + ") } } } } }"),
		"nanite_assembly_build parts[1].transforms[1].location: 'x' must be a number");
	EXPECT_EQ(Read(std::string("{ output = '/Game/P', parts = { { mesh = ") + Cube + ", transforms = { setmetatable({ location = {}, Scale = 1 }, " + Boom
				  + ") } } } }",
				  Request, Error),
		false);
	EXPECT_EQ(Error, "nanite_assembly_build parts[1].transforms[1]: unknown key 'Scale' (accepted: location|translation|rotation|scale)");
}

TEST_F(RequestReaderTest, LengthsThatAreNotIntegersRoundToTheNearest)
{
	const std::string Part = std::string("{ mesh = ") + Cube + ", transforms = { {} } }";
	const std::string Parts = "setmetatable({}, { __index = function() return " + Part + " end, __len = function() return %s end })";
	auto CountFor = [&](const std::string& Length)
	{
		std::string Expression = "{ output = '/Game/P', parts = " + Parts + " }";
		Expression.replace(Expression.find("%s"), 2, Length);
		FNaniteAssemblyBuildRequest Request;
		std::string Error;
		Read(Expression, Request, Error);
		return Error.empty() ? std::to_string(Request.Parts.Num()) : Error;
	};
	EXPECT_EQ(CountFor("2.6"), "3");
	EXPECT_EQ(CountFor("2.5"), "3");
	EXPECT_EQ(CountFor("2.4"), "2");
	EXPECT_EQ(CountFor("'2'"), "2");
	const std::string Empty = "nanite_assembly_build: 'parts' is empty; at least one part with one transform is required";
	EXPECT_EQ(CountFor("0.4"), Empty);
	EXPECT_EQ(CountFor("-2.5"), Empty);
	EXPECT_EQ(CountFor("'many'"), Empty);
	EXPECT_EQ(CountFor("{}"), Empty);
	EXPECT_EQ(CountFor("0/0"), Empty);
}

TEST_F(RequestReaderTest, EveryRefusalLeavesTheStackAndRegistryAsFound)
{
	const std::string P = std::string("{ mesh = ") + Cube + ", transforms = { %s } }";
	auto WithTransform = [&](const std::string& Transform)
	{
		std::string Part = P;
		Part.replace(Part.find("%s"), 2, Transform);
		return "{ output = '/Game/X', parts = { " + Part + " } }";
	};
	EXPECT_EQ(ReadError("{ output = '/Game/X', parts = { 5 } }"), "nanite_assembly_build parts[1]: must be a table { mesh=, transforms={...} }");
	EXPECT_EQ(ReadError(WithTransform("{ location = { 1, 2 } }")), "nanite_assembly_build parts[1].transforms[1].location: only string keys are accepted");
	EXPECT_EQ(ReadError(WithTransform("{ rotation = { yaw = 1, z = 2 } }")),
		"nanite_assembly_build parts[1].transforms[1].rotation: use either {pitch,yaw,roll} or Euler {x,y,z}, not both");
	EXPECT_EQ(ReadError(WithTransform("{ scale = { z = 1/0 } }")), "nanite_assembly_build parts[1].transforms[1].scale: 'z' must be finite");
	EXPECT_EQ(ReadError(WithTransform("{}, {}, { scale = 'big' }")),
		"nanite_assembly_build parts[1].transforms[3]: 'scale' must be a number or a table {x,y,z}");
	EXPECT_EQ(ReadError(std::string("{ output = '/Game/X', parts = { { mesh = ") + Cube + ", transforms = { {} }, material_overrides = { 'a', 'b', false } } } }"),
		"nanite_assembly_build parts[1].material_overrides[3]: must be a material path string");
	EXPECT_EQ(ReadError("{ output = '/Game/X', parts = { { mesh = 'ok', transforms = { {} } }, { mesh = 'ok', transforms = { {} }, material_merge = 'x' } } }"),
		"nanite_assembly_build parts[2]: unknown material_merge 'x' (identical_materials|slot_names|material_indices)");
}

TEST_F(RequestReaderTest, KeysAreComparedAsBytesAndEmbeddedNulsEndTexts)
{
	EXPECT_EQ(ReadError("{ output = '/Game/X', parts = {}, ['parts\\0x'] = 1 }"),
		"nanite_assembly_build: unknown key 'parts' (accepted: parts|output|overwrite|save|wait_for_compile)");
	EXPECT_EQ(ReadError("{ output = '/Game/X', parts = {}, ['\\u{e9}t\\u{e9}'] = 1 }"),
		"nanite_assembly_build: unknown key '\xC3\xA9t\xC3\xA9' (accepted: parts|output|overwrite|save|wait_for_compile)");

	FNaniteAssemblyBuildRequest Request;
	std::string Error;
	ASSERT_TRUE(Read(std::string("{ output = '/Game/Out\\0Hidden', parts = { { mesh = ") + Cube + ", transforms = { {} }, material_merge = 'slot_names\\0junk' } } }",
		Request, Error))
		<< Error;
	EXPECT_EQ(ToUtf8(Request.Output), "/Game/Out");
	EXPECT_EQ(Request.Parts[0].MaterialMerge, ENaniteAssemblyMergeMode::SlotNames);
}

TEST_F(RequestReaderTest, ScriptErrorsFromMetamethodsComeBackAsThemselves)
{
	auto ErrorOf = [&](const std::string& Expression)
	{
		Push(Expression);
		sol::table Argument(L, -1);
		lua_pop(L, 1);
		const int Top = lua_gettop(L);
		FNaniteAssemblyBuildRequest Request;
		FString Error;
		std::string Raised;
		try
		{
			ReadBuildRequest(Argument, Request, Error);
		}
		catch (const FScriptError& Exception)
		{
			Raised = Exception.what();
		}
		EXPECT_EQ(lua_gettop(L), Top);
		return Raised;
	};
	EXPECT_EQ(ErrorOf("setmetatable({}, { __index = function() error('boom', 0) end })"), "boom");
	EXPECT_EQ(ErrorOf("{ output = '/Game/X', parts = setmetatable({}, { __len = function() error({}) end }) }"), "(error object is a table value)");

	// A full userdata passes the binding's check; without __index, reading it is the script's error.
	lua_newuserdatauv(L, 8, 0);
	sol::table Userdata(L, -1);
	lua_pop(L, 1);
	FNaniteAssemblyBuildRequest Request;
	FString Error;
	try
	{
		ReadBuildRequest(Userdata, Request, Error);
		ADD_FAILURE() << "reading a plain userdata raised nothing";
	}
	catch (const FScriptError& Exception)
	{
		EXPECT_NE(std::string(Exception.what()).find("attempt to index a userdata value"), std::string::npos) << Exception.what();
	}
}

TEST_F(RequestReaderTest, TheSmallReadersOnTheirOwn)
{
	const FString RootText(TEXT("ctx"));
	const FContextPath Root(RootText);
	FString Error;

	Push("42");
	EXPECT_TRUE(CheckOnlyKnownKeys(sol::stack_object(L, -1), TConstArrayView<const ANSICHAR*>(), Root, Error)) << "a non-table has nothing to check";
	lua_pop(L, 1);

	Push("{ a = 1 }");
	EXPECT_FALSE(CheckOnlyKnownKeys(sol::stack_object(L, -1), TConstArrayView<const ANSICHAR*>(), Root, Error));
	EXPECT_EQ(ToUtf8(Error), "ctx: unknown key 'a' (accepted: )");
	double Unused = 0.0;
	EXPECT_TRUE(ReadNumberFields(sol::stack_object(L, -1), nullptr, 0, &Unused, nullptr, Root, Error)) << "no fields to read";
	lua_pop(L, 1);

	Push("{ x = 3, z = 2^53 }");
	const ANSICHAR* const Keys[] = { "x", "y", "z" };
	const double Defaults[] = { -1.0, -2.0, -3.0 };
	double Values[3] = {};
	ASSERT_TRUE(ReadNumberFields(sol::stack_object(L, -1), Keys, 3, Values, Defaults, Root, Error));
	EXPECT_EQ(Values[0], 3.0);
	EXPECT_EQ(Values[1], -2.0);
	EXPECT_EQ(Values[2], 9007199254740992.0);
	// A refused field leaves the stack as found, as a read one does.
	const int Top = lua_gettop(L);
	Push("{ x = 'three' }");
	EXPECT_FALSE(ReadNumberFields(sol::stack_object(L, -1), Keys, 3, Values, Defaults, Root, Error));
	EXPECT_EQ(lua_gettop(L), Top + 1);
	lua_pop(L, 1);
	bool bValue = true;
	EXPECT_TRUE(ReadOptionalBool(sol::stack_object(L, -1), "missing", bValue, Error));
	EXPECT_TRUE(bValue) << "nil keeps the caller's default";
	EXPECT_FALSE(ReadOptionalBool(sol::stack_object(L, -1), "x", bValue, Error));
	EXPECT_EQ(ToUtf8(Error), "nanite_assembly_build: 'x' must be a boolean");
	lua_pop(L, 1);

	ENaniteAssemblyMergeMode Mode = ENaniteAssemblyMergeMode::IdenticalMaterials;
	EXPECT_TRUE(ParseMaterialMerge(TEXT("MATERIAL_INDICES"), Mode, Error));
	EXPECT_EQ(Mode, ENaniteAssemblyMergeMode::MaterialIndices);
	EXPECT_FALSE(ParseMaterialMerge(TEXT("slot_names "), Mode, Error));
	EXPECT_EQ(ToUtf8(Error), "unknown material_merge 'slot_names ' (identical_materials|slot_names|material_indices)");
	EXPECT_EQ(ToUtf8(MaterialMergeName(ENaniteAssemblyMergeMode::IdenticalMaterials)), "identical_materials");
	EXPECT_EQ(ToUtf8(MaterialMergeName(ENaniteAssemblyMergeMode::SlotNames)), "slot_names");
	EXPECT_EQ(ToUtf8(MaterialMergeName(ENaniteAssemblyMergeMode::MaterialIndices)), "material_indices");
	EXPECT_EQ(ToUtf8(MaterialMergeName((ENaniteAssemblyMergeMode)7)), "unknown");

	const FContextPath Part(Root, TEXT(" parts"), 12);
	const FContextPath Transform(Part, TEXT(".transforms"), 3);
	const FContextPath Location(Transform, TEXT(".location"));
	EXPECT_EQ(ToUtf8(Location.ToString()), "ctx parts[12].transforms[3].location");
}
