// Turns bytes into a nest of Lua tables (keys from the request's own words and strangers, values of every
// type, proxies with __index and __len) and reads it as a build request. The reader must never crash, must
// return a message exactly when it refuses, and must leave the Lua stack and registry as it found them.
#include "Request/NaniteAssemblyBuildRequest.h"

#include <sol/sol.hpp>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace CVAI::NaniteAssembly;

namespace
{
	class FByteReader
	{
	public:
		FByteReader(const uint8_t* InData, size_t InSize) : Data(InData), Size(InSize) {}

		uint8_t Next()
		{
			return Position < Size ? Data[Position++] : 0;
		}

		bool Empty() const { return Position >= Size; }

	private:
		const uint8_t* Data;
		size_t Size;
		size_t Position = 0;
	};

	const char* const Words[] = { "parts", "output", "overwrite", "save", "wait_for_compile", "mesh", "transforms", "material_merge",
		"material_overrides", "location", "translation", "rotation", "scale", "x", "y", "z", "pitch", "yaw", "roll", "identical_materials",
		"slot_names", "material_indices", "/Engine/BasicShapes/Cube", "", "Location", "bogus", "\xC3\xA9", "a\0b" };

	void PushValue(lua_State* L, FByteReader& Bytes, int Depth);

	void PushKey(lua_State* L, FByteReader& Bytes)
	{
		const uint8_t Choice = Bytes.Next();
		if (Choice < 200)
		{
			const char* Word = Words[Choice % (sizeof(Words) / sizeof(Words[0]))];
			lua_pushlstring(L, Word, std::strcmp(Word, "a") == 0 ? 3 : std::strlen(Word));
		}
		else if (Choice < 240)
		{
			lua_pushinteger(L, (lua_Integer)(Bytes.Next() % 8) - 1);
		}
		else if (Choice < 250)
		{
			lua_pushboolean(L, Choice & 1);
		}
		else
		{
			lua_pushnumber(L, 0.5 + Bytes.Next());
		}
	}

	void PushTable(lua_State* L, FByteReader& Bytes, int Depth)
	{
		lua_newtable(L);
		const int Count = Bytes.Next() % 7;
		for (int Index = 0; Index < Count && !Bytes.Empty(); ++Index)
		{
			PushKey(L, Bytes);
			PushValue(L, Bytes, Depth + 1);
			lua_rawset(L, -3);
		}
		// Sometimes a proxy: an empty table whose fields and length come from metamethods.
		if (Bytes.Next() % 8 == 0)
		{
			lua_newtable(L);
			lua_pushvalue(L, -2);
			lua_setfield(L, -2, "__index");
			if (Bytes.Next() % 2 == 0)
			{
				const lua_Number Length = (lua_Number)(Bytes.Next() % 6) + (Bytes.Next() % 3) * 0.5;
				luaL_dostring(L, "return function(length) return function() return length end end");
				lua_pushnumber(L, Length);
				lua_call(L, 1, 1);
				lua_setfield(L, -2, "__len");
			}
			lua_newtable(L);
			lua_insert(L, -2);
			lua_setmetatable(L, -2);
			lua_remove(L, -2);
		}
	}

	void PushValue(lua_State* L, FByteReader& Bytes, int Depth)
	{
		const uint8_t Choice = Bytes.Next() % 12;
		switch (Depth > 5 ? Choice % 6 : Choice)
		{
		case 0:
			lua_pushnil(L);
			break;
		case 1:
			lua_pushboolean(L, Bytes.Next() & 1);
			break;
		case 2:
			lua_pushinteger(L, (lua_Integer)(int8_t)Bytes.Next());
			break;
		case 3:
		{
			const uint8_t Kind = Bytes.Next() % 5;
			const lua_Number Values[] = { 0.0 / 0.0, 1.0 / 0.0, -1.0 / 0.0, 1e308, -0.0 };
			lua_pushnumber(L, Kind < 5 && Bytes.Next() % 4 == 0 ? Values[Kind] : (lua_Number)(int8_t)Bytes.Next() / 4.0);
			break;
		}
		case 4:
		case 5:
			PushKey(L, Bytes);
			if (lua_type(L, -1) != LUA_TSTRING)
			{
				lua_tostring(L, -1);
			}
			break;
		default:
			PushTable(L, Bytes, Depth);
			break;
		}
	}

	// Most of the time a field gets the value a real request would hold; now and then any value at all.
	void PushNumberOrStranger(lua_State* L, FByteReader& Bytes, int Depth)
	{
		if (Bytes.Next() % 16 == 0)
		{
			PushValue(L, Bytes, Depth);
		}
		else
		{
			lua_pushnumber(L, (lua_Number)(int8_t)Bytes.Next() * 7.5);
		}
	}

	void PushVector(lua_State* L, FByteReader& Bytes, const char* const* Keys, int Depth)
	{
		lua_newtable(L);
		const uint8_t Present = Bytes.Next();
		for (int Axis = 0; Axis < 3; ++Axis)
		{
			if (Present & (1 << Axis))
			{
				PushNumberOrStranger(L, Bytes, Depth);
				lua_setfield(L, -2, Keys[Axis]);
			}
		}
	}

	void PushTransform(lua_State* L, FByteReader& Bytes)
	{
		static const char* const XYZ[] = { "x", "y", "z" };
		static const char* const PYR[] = { "pitch", "yaw", "roll" };
		lua_newtable(L);
		const uint8_t Shape = Bytes.Next();
		if (Shape & 1)
		{
			PushVector(L, Bytes, XYZ, 3);
			lua_setfield(L, -2, (Shape & 2) ? "location" : "translation");
		}
		if (Shape & 4)
		{
			PushVector(L, Bytes, (Shape & 8) ? PYR : XYZ, 3);
			lua_setfield(L, -2, "rotation");
		}
		if (Shape & 16)
		{
			if (Shape & 32)
			{
				PushNumberOrStranger(L, Bytes, 3);
			}
			else
			{
				PushVector(L, Bytes, XYZ, 3);
			}
			lua_setfield(L, -2, "scale");
		}
		if ((Shape & 192) == 192)
		{
			PushKey(L, Bytes);
			PushValue(L, Bytes, 3);
			lua_rawset(L, -3);
		}
	}

	// A request shaped like a real one, with faults sprinkled in by the bytes.
	void PushRequest(lua_State* L, FByteReader& Bytes)
	{
		static const char* const Merges[] = { "identical_materials", "SLOT_NAMES", "material_indices", "other" };
		lua_newtable(L);
		if (Bytes.Next() % 8 != 0)
		{
			lua_pushstring(L, "/Game/Fuzz/SM_Out");
			lua_setfield(L, -2, "output");
		}
		if (Bytes.Next() % 4 == 0)
		{
			PushValue(L, Bytes, 1);
			lua_setfield(L, -2, "save");
		}
		lua_newtable(L);
		const int PartCount = Bytes.Next() % 4;
		for (int Part = 1; Part <= PartCount; ++Part)
		{
			lua_newtable(L);
			lua_pushstring(L, Bytes.Next() % 8 ? "/Engine/BasicShapes/Cube" : "");
			lua_setfield(L, -2, "mesh");
			lua_newtable(L);
			const int TransformCount = Bytes.Next() % 5;
			for (int Transform = 1; Transform <= TransformCount; ++Transform)
			{
				if (Bytes.Next() % 32 == 0)
				{
					PushValue(L, Bytes, 2);
				}
				else
				{
					PushTransform(L, Bytes);
				}
				lua_rawseti(L, -2, Transform);
			}
			lua_setfield(L, -2, "transforms");
			const uint8_t Extras = Bytes.Next();
			if (Extras & 1)
			{
				lua_pushstring(L, Merges[(Extras >> 1) % 4]);
				lua_setfield(L, -2, "material_merge");
			}
			if (Extras & 8)
			{
				lua_newtable(L);
				lua_pushstring(L, (Extras & 16) ? "" : "/Engine/BasicShapes/BasicShapeMaterial");
				lua_rawseti(L, -2, 1);
				lua_setfield(L, -2, "material_overrides");
			}
			lua_rawseti(L, -2, Part);
		}
		lua_setfield(L, -2, "parts");
	}

	int32_t CountRegistry(lua_State* L)
	{
		int32_t Count = 0;
		lua_pushnil(L);
		while (lua_next(L, LUA_REGISTRYINDEX) != 0)
		{
			++Count;
			lua_pop(L, 1);
		}
		return Count;
	}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	sol::state Lua;
	Lua.open_libraries(sol::lib::base);
	lua_State* L = Lua.lua_state();
	FByteReader Bytes(Data, Size);
	if (Bytes.Next() % 4 == 0)
	{
		PushTable(L, Bytes, 0);
	}
	else
	{
		PushRequest(L, Bytes);
	}
	sol::table Argument(L, -1);
	lua_pop(L, 1);

	const int Top = lua_gettop(L);
	const int32_t Registered = CountRegistry(L);
	FNaniteAssemblyBuildRequest Request;
	FString Error;
	bool bRead = false;
	bool bRaised = false;
	try
	{
		bRead = ReadBuildRequest(Argument, Request, Error);
	}
	catch (const FScriptError&)
	{
		bRaised = true;
	}
	if (!bRaised && bRead != Error.IsEmpty())
	{
		std::fprintf(stderr, "the reader returned %d with the message '%s'\n", (int)bRead, (const char*)FTCHARToUTF8(*Error).Get());
		std::abort();
	}
	if (lua_gettop(L) != Top || CountRegistry(L) != Registered)
	{
		std::fprintf(stderr, "the reader left the stack at %d (was %d) and the registry at %d (was %d)\n", lua_gettop(L), Top, CountRegistry(L), Registered);
		std::abort();
	}
	if (bRead && (Request.Parts.IsEmpty() || Request.Parts[0].Transforms.IsEmpty()))
	{
		std::fprintf(stderr, "a request was read without parts or transforms\n");
		std::abort();
	}
	return 0;
}
