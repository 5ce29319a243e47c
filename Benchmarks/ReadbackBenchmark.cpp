// The readback of large assemblies, against a floor: one bare pass over the same node list that counts the
// nodes of each part. Measured twice: the whole nanite_assembly_info call from Lua (path completion, the
// look-up of the loaded mesh, the result table, the log line) and the readback alone.
#include "BenchmarkEditor.h"
#include "RatioReporter.h"

#include "Engine/StaticMesh.h"
#include "Headless/StringUtils.h"
#include "Result/NaniteAssemblyResult.h"
#include "Misc/PackageName.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <sol/sol.hpp>

#include <cstdio>
#include <map>
#include <string>
#include <utility>

using namespace CVAI::NaniteAssembly;

namespace
{
	struct FAssemblySize
	{
		int64_t Parts;
		int64_t Nodes;
	};

	const FAssemblySize Sizes[] = { { 1, 1000 }, { 100, 100000 }, { 1000, 1000000 } };

	// One assembly mesh of each size, loaded in memory in the benchmark editor.
	class FAssemblyMeshes
	{
	public:
		static UStaticMesh& Get(const FAssemblySize& Size)
		{
			static std::map<std::pair<int64_t, int64_t>, UStaticMesh*> Meshes;
			FBenchmarkEditor::Get();
			const std::pair<int64_t, int64_t> Key(Size.Parts, Size.Nodes);
			auto Found = Meshes.find(Key);
			if (Found == Meshes.end())
			{
				Found = Meshes.emplace(Key, MakeMesh(Size)).first;
			}
			return *Found->second;
		}

		static std::string PathOf(const FAssemblySize& Size)
		{
			return "/Game/Bench/SM_Assembly_" + std::to_string(Size.Parts) + "_" + std::to_string(Size.Nodes);
		}

	private:
		static UStaticMesh* MakeMesh(const FAssemblySize& Size)
		{
			const FString PackagePath = UE::Headless::FromUtf8(PathOf(Size));
			UPackage* Package = CreatePackage(*PackagePath);
			UStaticMesh* Mesh = NewObject<UStaticMesh>(Package, FName(*FPackageName::GetShortName(PackagePath)), RF_Public | RF_Standalone);
			FMeshNaniteSettings Settings = Mesh->GetNaniteSettings();
			Settings.bEnabled = true;
			FNaniteAssemblyData& Data = Settings.NaniteAssemblyData;
			Data.Parts.SetNum((int32)Size.Parts);
			for (FNaniteAssemblyPart& Part : Data.Parts)
			{
				Part.MeshObjectPath = FSoftObjectPath(TEXT("/Engine/BasicShapes/Cube.Cube"));
				Part.MaterialRemap = { 0 };
			}
			Data.Nodes.SetNum((int32)Size.Nodes);
			for (int32 Index = 0; Index < Data.Nodes.Num(); ++Index)
			{
				FNaniteAssemblyNode& Node = Data.Nodes[Index];
				Node.PartIndex = Index % (int32)Size.Parts;
				Node.Transform = FTransform3f(FRotator3f(0.0f, (float)(Index % 360), 0.0f).Quaternion(), FVector3f((float)Index, 2.0f * Index, 0.5f),
					FVector3f(1.0f, 1.0f, 1.0f));
			}
			Mesh->SetNaniteSettings(Settings);
			return Mesh;
		}
	};

	FAssemblySize SizeOf(const benchmark::State& State)
	{
		return FAssemblySize{ State.range(0), State.range(1) };
	}

	void BM_InfoVerb(benchmark::State& State)
	{
		const FAssemblySize Size = SizeOf(State);
		FAssemblyMeshes::Get(Size);
		lua_State* L = FBenchmarkEditor::Get().Lua();
		FBenchmarkEditor::Get().PushChunkResult("local path = ... return function() return nanite_assembly_info(path) end", FAssemblyMeshes::PathOf(Size));
		const int Call = lua_gettop(L);
		for (auto _ : State)
		{
			lua_pushvalue(L, Call);
			if (lua_pcall(L, 0, 1, 0) != LUA_OK)
			{
				State.SkipWithError(lua_tostring(L, -1));
				break;
			}
			lua_getfield(L, -1, "ok");
			if (!lua_toboolean(L, -1))
			{
				State.SkipWithError("nanite_assembly_info refused the mesh");
				break;
			}
			lua_pop(L, 2);
		}
		lua_settop(L, Call - 1);
		State.SetItemsProcessed(State.iterations() * Size.Nodes);
	}

	void BM_WriteReadback(benchmark::State& State)
	{
		UStaticMesh& Mesh = FAssemblyMeshes::Get(SizeOf(State));
		lua_State* L = FBenchmarkEditor::Get().Lua();
		for (auto _ : State)
		{
			lua_createtable(L, 0, 17);
			const int Table = lua_gettop(L);
			WriteNaniteAssemblyReadback(L, Table, Mesh, true, true);
			benchmark::DoNotOptimize(lua_topointer(L, Table));
			lua_settop(L, Table - 1);
		}
		State.SetItemsProcessed(State.iterations() * State.range(1));
	}

	// The floor: the node counts per part, and nothing else.
	void BM_FloorNodePass(benchmark::State& State)
	{
		const FNaniteAssemblyData& Data = FAssemblyMeshes::Get(SizeOf(State)).GetNaniteSettings().NaniteAssemblyData;
		for (auto _ : State)
		{
			TArray<int64> Counts;
			Counts.SetNum(Data.Parts.Num());
			for (const FNaniteAssemblyNode& Node : Data.Nodes)
			{
				if (Counts.IsValidIndex(Node.PartIndex))
				{
					++Counts[Node.PartIndex];
				}
			}
			benchmark::DoNotOptimize(Counts.GetData());
		}
		State.SetItemsProcessed(State.iterations() * State.range(1));
	}

	void AddSizes(benchmark::internal::Benchmark* Benchmark)
	{
		Benchmark->ArgNames({ "parts", "nodes" });
		for (const FAssemblySize& Size : Sizes)
		{
			Benchmark->Args({ Size.Parts, Size.Nodes });
		}
	}
}

BENCHMARK(BM_InfoVerb)->Apply(AddSizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_WriteReadback)->Apply(AddSizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FloorNodePass)->Apply(AddSizes)->Unit(benchmark::kMicrosecond);

int main(int Argc, char** Argv)
{
	return RunBenchmarksWithRatios(Argc, Argv, [](const FRatioReporter& Reporter)
	{
		std::printf("Reading back an assembly, relative to one bare pass over its nodes (the readback lists at most %d nodes,\n"
					"a fixed cost that small assemblies show and large ones hide):\n",
			NaniteAssemblyReadbackNodeCap);
		for (const FAssemblySize& Size : Sizes)
		{
			const std::string Suffix = "/parts:" + std::to_string(Size.Parts) + "/nodes:" + std::to_string(Size.Nodes);
			const std::string Label = "  " + std::to_string(Size.Parts) + " parts, " + std::to_string(Size.Nodes) + " nodes";
			Reporter.PrintRatio(Label + ", nanite_assembly_info", "BM_InfoVerb" + Suffix, "BM_FloorNodePass" + Suffix);
			Reporter.PrintRatio(Label + ", readback alone", "BM_WriteReadback" + Suffix, "BM_FloorNodePass" + Suffix);
		}
	});
}
