// Whole nanite_assembly_build calls of 1 to 100,000 transforms, and the module's own steps measured apart
// on the same request: reading it, then reading and validating it. What the call spends beyond them is the
// builder (with its transaction, the compile and the result); a call that also saves shows the save.
#include "BenchmarkEditor.h"
#include "RatioReporter.h"

#include "Build/NaniteAssemblyBuild.h"
#include "Request/NaniteAssemblyBuildRequest.h"

#include <sol/sol.hpp>

#include <cstdio>
#include <map>
#include <string>
#include <utility>

using namespace CVAI::NaniteAssembly;

namespace
{
	const int64_t Sizes[] = { 1, 100, 1000, 10000, 100000 };

	// One request per size and save flag: up to four parts sharing the transforms, each transform with a
	// location, a rotation and a scale; the output is overwritten by every call.
	const sol::table& BuildRequest(int64_t TransformCount, bool bSave)
	{
		// The editor first, so that it outlives the references into its Lua state.
		FBenchmarkEditor& Editor = FBenchmarkEditor::Get();
		static std::map<std::pair<int64_t, bool>, sol::table> Requests;
		const std::pair<int64_t, bool> Key(TransformCount, bSave);
		auto Found = Requests.find(Key);
		if (Found == Requests.end())
		{
			Editor.PushChunkResult(std::string("local n = math.tointeger(tonumber(...)) local save = ") + (bSave ? "true" : "false")
					+ " local meshes = { '/Engine/BasicShapes/Cube', '/Engine/BasicShapes/Cylinder', '/Engine/BasicShapes/Sphere', '/Engine/BasicShapes/Cone' }"
					  " local parts = {}"
					  " for i = 1, math.min(n, #meshes) do parts[i] = { mesh = meshes[i], transforms = {} } end"
					  " for i = 1, n do"
					  "   local list = parts[(i - 1) % #parts + 1].transforms"
					  "   list[#list + 1] = { location = { x = i * 10, y = i % 7, z = 0 }, rotation = { yaw = i % 360 }, scale = 1 + (i % 3) * 0.5 }"
					  " end"
					  " return { output = '/Game/Bench/SM_Build' .. n .. (save and '_Saved' or ''), overwrite = true, save = save, parts = parts }",
				std::to_string(TransformCount));
			lua_State* L = Editor.Lua();
			Found = Requests.emplace(Key, sol::table(L, -1)).first;
			// One build first, so that every measured step finds the output as a build call finds it.
			lua_getglobal(L, "nanite_assembly_build");
			lua_insert(L, -2);
			lua_call(L, 1, 0);
			Editor.ResetUndoBuffer();
		}
		return Found->second;
	}

	void BuildCalls(benchmark::State& State, bool bSave)
	{
		FBenchmarkEditor& Editor = FBenchmarkEditor::Get();
		lua_State* L = Editor.Lua();
		const int Top = lua_gettop(L);
		BuildRequest(State.range(0), bSave).push(L);
		lua_getglobal(L, "nanite_assembly_build");
		const int Request = Top + 1;
		const int Verb = Top + 2;
		for (auto _ : State)
		{
			lua_pushvalue(L, Verb);
			lua_pushvalue(L, Request);
			lua_call(L, 1, 1);
			lua_getfield(L, -1, "ok");
			if (!lua_toboolean(L, -1))
			{
				lua_getfield(L, -2, "error");
				State.SkipWithError(lua_tostring(L, -1));
				break;
			}
			lua_pop(L, 2);
			// Each call is one undo step holding the mesh it replaced; they are dropped outside the timing.
			State.PauseTiming();
			Editor.ResetUndoBuffer();
			State.ResumeTiming();
		}
		lua_settop(L, Top);
		State.SetItemsProcessed(State.iterations() * State.range(0));
	}

	void BM_BuildCall(benchmark::State& State)
	{
		BuildCalls(State, false);
	}

	void BM_BuildCallWithSave(benchmark::State& State)
	{
		BuildCalls(State, true);
	}

	void ReadAndMaybeValidate(benchmark::State& State, bool bValidate)
	{
		const sol::table& Request = BuildRequest(State.range(0), false);
		for (auto _ : State)
		{
			FNaniteAssemblyBuildRequest Read;
			FNaniteAssemblyBuildPlan Plan;
			FString Error;
			if (!ReadBuildRequest(Request, Read, Error) || (bValidate && !ValidateNaniteAssemblyRequest(Read, Plan, Error)))
			{
				State.SkipWithError("the request was refused");
				break;
			}
			benchmark::DoNotOptimize(Plan.Parts.GetData());
		}
		State.SetItemsProcessed(State.iterations() * State.range(0));
	}

	void BM_Read(benchmark::State& State)
	{
		ReadAndMaybeValidate(State, false);
	}

	void BM_ReadAndValidate(benchmark::State& State)
	{
		ReadAndMaybeValidate(State, true);
	}

	void AddSizes(benchmark::internal::Benchmark* Benchmark)
	{
		Benchmark->ArgName("transforms");
		for (const int64_t Size : Sizes)
		{
			Benchmark->Arg(Size);
		}
	}
}

BENCHMARK(BM_BuildCall)->Apply(AddSizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_BuildCallWithSave)->Apply(AddSizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Read)->Apply(AddSizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ReadAndValidate)->Apply(AddSizes)->Unit(benchmark::kMicrosecond);

int main(int Argc, char** Argv)
{
	return RunBenchmarksWithRatios(Argc, Argv, [](const FRatioReporter& Reporter)
	{
		std::printf("Shares of a whole build call (save=false), and the save against a call that saves:\n");
		std::printf("  %-12s %10s %12s %10s %10s\n", "transforms", "reading", "validation", "builder", "save");
		for (const int64_t Size : Sizes)
		{
			const std::string Suffix = "/transforms:" + std::to_string(Size);
			const double Call = Reporter.Time("BM_BuildCall" + Suffix);
			const double Saving = Reporter.Time("BM_BuildCallWithSave" + Suffix);
			const double Read = Reporter.Time("BM_Read" + Suffix);
			const double Validated = Reporter.Time("BM_ReadAndValidate" + Suffix);
			if (Call <= 0.0 || Saving <= 0.0 || Read <= 0.0 || Validated <= 0.0)
			{
				std::printf("  %-12lld (not measured: filtered out)\n", (long long)Size);
				continue;
			}
			const double ValidationOnly = Validated > Read ? Validated - Read : 0.0;
			const double Builder = Call > Validated ? Call - Validated : 0.0;
			const double Save = Saving > Call ? Saving - Call : 0.0;
			std::printf("  %-12lld %9.1f%% %11.1f%% %9.1f%% %9.1f%%\n", (long long)Size, 100.0 * Read / Call, 100.0 * ValidationOnly / Call,
				100.0 * Builder / Call, 100.0 * Save / Saving);
		}
	});
}
