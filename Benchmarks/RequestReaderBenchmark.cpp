// Reading build requests of 1 to 100,000 transforms, against a floor: a bare walk over the same tables
// that does one lua_getfield per field the request holds. The reader should stay within twice the floor
// and grow linearly.
#include "RatioReporter.h"
#include "Request/NaniteAssemblyBuildRequest.h"

#include <sol/sol.hpp>

#include <map>
#include <memory>
#include <string>

using namespace CVAI::NaniteAssembly;

namespace
{
	const int64_t Sizes[] = { 1, 10, 100, 1000, 10000, 100000 };

	struct FRequestFixture
	{
		sol::state Lua;
		std::map<int64_t, sol::table> Requests;

		static FRequestFixture& Get()
		{
			static FRequestFixture Fixture;
			return Fixture;
		}

		// One part whose transforms each hold a location, a rotation and a scale of three numbers.
		const sol::table& Request(int64_t TransformCount)
		{
			auto Found = Requests.find(TransformCount);
			if (Found != Requests.end())
			{
				return Found->second;
			}
			const std::string Code = "local n = ... local t = {} for i = 1, n do "
									 "t[i] = { location = { x = i, y = i * 2, z = 0.5 }, rotation = { pitch = i % 90, yaw = i % 360, roll = 1 },"
									 " scale = { x = 1, y = 2, z = 3 } } end "
									 "return { output = '/Game/Bench/SM_Read', parts = { { mesh = '/Engine/BasicShapes/Cube', transforms = t } } }";
			lua_State* L = Lua.lua_state();
			luaL_loadstring(L, Code.c_str());
			lua_pushinteger(L, TransformCount);
			lua_call(L, 1, 1);
			sol::table Table(L, -1);
			lua_pop(L, 1);
			return Requests.emplace(TransformCount, Table).first->second;
		}
	};

	void BM_ReadBuildRequest(benchmark::State& State)
	{
		const sol::table& Request = FRequestFixture::Get().Request(State.range(0));
		for (auto _ : State)
		{
			FNaniteAssemblyBuildRequest Read;
			FString Error;
			if (!ReadBuildRequest(Request, Read, Error))
			{
				State.SkipWithError("the request was refused");
				break;
			}
			benchmark::DoNotOptimize(Read.Parts.GetData());
		}
		State.SetItemsProcessed(State.iterations() * State.range(0));
	}

	double ReadNumber(lua_State* L, int Table, const char* Key)
	{
		lua_getfield(L, Table, Key);
		const double Value = lua_tonumber(L, -1);
		lua_pop(L, 1);
		return Value;
	}

	// The floor: the same walk with nothing checked and nothing kept.
	void BM_FloorGetfieldWalk(benchmark::State& State)
	{
		const sol::table& Request = FRequestFixture::Get().Request(State.range(0));
		lua_State* L = Request.lua_state();
		static const char* const Vector[] = { "x", "y", "z" };
		static const char* const Rotator[] = { "pitch", "yaw", "roll" };
		for (auto _ : State)
		{
			double Sum = 0.0;
			Request.push(L);
			lua_getfield(L, -1, "output");
			lua_pop(L, 1);
			lua_getfield(L, -1, "parts");
			lua_geti(L, -1, 1);
			lua_getfield(L, -1, "mesh");
			lua_pop(L, 1);
			lua_getfield(L, -1, "transforms");
			const lua_Integer Count = luaL_len(L, -1);
			for (lua_Integer Index = 1; Index <= Count; ++Index)
			{
				lua_geti(L, -1, Index);
				const int Transform = lua_gettop(L);
				for (const char* Field : { "location", "rotation", "scale" })
				{
					lua_getfield(L, Transform, Field);
					const char* const* Keys = Field[0] == 'r' ? Rotator : Vector;
					for (int Axis = 0; Axis < 3; ++Axis)
					{
						Sum += ReadNumber(L, lua_gettop(L), Keys[Axis]);
					}
					lua_pop(L, 1);
				}
				lua_pop(L, 1);
			}
			lua_pop(L, 4);
			benchmark::DoNotOptimize(Sum);
		}
		State.SetItemsProcessed(State.iterations() * State.range(0));
	}
}

BENCHMARK(BM_ReadBuildRequest)->ArgName("transforms")->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(BM_FloorGetfieldWalk)->ArgName("transforms")->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000);

int main(int Argc, char** Argv)
{
	return RunBenchmarksWithRatios(Argc, Argv, [](const FRatioReporter& Reporter)
	{
		std::printf("Reading a request, relative to one lua_getfield per field it holds (target: at most 2x at 100000):\n");
		for (const int64_t Size : Sizes)
		{
			const std::string Suffix = "/transforms:" + std::to_string(Size);
			Reporter.PrintRatio("  " + std::to_string(Size) + " transforms", "BM_ReadBuildRequest" + Suffix, "BM_FloorGetfieldWalk" + Suffix);
		}
		const double Small = Reporter.Time("BM_ReadBuildRequest/transforms:1000");
		const double Large = Reporter.Time("BM_ReadBuildRequest/transforms:100000");
		if (Small > 0.0 && Large > 0.0)
		{
			std::printf("Growth from 1000 to 100000 transforms: %.1fx (linear: 100x)\n", Large / Small);
		}
	});
}
