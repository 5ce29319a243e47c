// Saving and loading a package of 1,000,000 assembly nodes (one part), against floors measured in the same run
// on the same file system: writing the nodes' payload (48 bytes a node) as raw bytes to a temporary file in the
// package's folder with an fsync, and reading those bytes back. The save is UEditorLoadingAndSavingUtils::SavePackages
// of the package, its backup included; the load is LoadPackage in a freshly started editor. The save's extra peak
// heap (counted by this program's own operator new and delete) is given against the payload. The glTF export of the
// same mesh (one instanced node carrying every node) is given against the save.
#include "RatioReporter.h"
#include "TestProject.h"

#include "Engine/StaticMesh.h"
#include "FileHelpers.h"
#include "Headless/GltfExport.h"
#include "Headless/StringUtils.h"
#include "Misc/PackageName.h"
#include "StaticMeshCompiler.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <malloc.h>
#include <memory>
#include <new>
#include <string>
#include <unistd.h>

namespace
{
	constexpr int32 NodeCount = 1000000;
	constexpr int64 PayloadBytes = (int64)NodeCount * 48;
	constexpr const TCHAR* PackageName = TEXT("/Game/Bench/SM_Nodes");

	std::atomic<int64> LiveHeapBytes{ 0 };
	std::atomic<int64> PeakHeapBytes{ 0 };
	int64 LargestSaveHeapBytes = 0;

	void NoteHeap(int64 Delta)
	{
		const int64 Live = LiveHeapBytes.fetch_add(Delta, std::memory_order_relaxed) + Delta;
		int64 Peak = PeakHeapBytes.load(std::memory_order_relaxed);
		while (Live > Peak && !PeakHeapBytes.compare_exchange_weak(Peak, Live, std::memory_order_relaxed))
		{
		}
	}

	void* Allocate(std::size_t Size, std::size_t Alignment)
	{
		void* Memory = Alignment > alignof(std::max_align_t) ? std::aligned_alloc(Alignment, (Size + Alignment - 1) / Alignment * Alignment)
															 : std::malloc(Size ? Size : 1);
		if (Memory)
		{
			NoteHeap((int64)malloc_usable_size(Memory));
		}
		return Memory;
	}

	void Release(void* Memory)
	{
		if (Memory)
		{
			NoteHeap(-(int64)malloc_usable_size(Memory));
			std::free(Memory);
		}
	}

	// One editor on one project for the whole run, restarted by the load benchmark; main stops it before the
	// engine's own statics go away.
	std::unique_ptr<FTestProject> RunningProject;

	FTestProject& Project()
	{
		if (!RunningProject)
		{
			RunningProject = std::make_unique<FTestProject>();
			if (!RunningProject->Start())
			{
				std::fprintf(stderr, "the headless editor did not start\n");
				std::exit(1);
			}
		}
		return *RunningProject;
	}

	std::string ContentFolder()
	{
		const std::string Folder = UE::Headless::ToUtf8(Project().GetDir()) + "/Content/Bench";
		std::filesystem::create_directories(Folder);
		return Folder;
	}

	// The package to save, made again after the load benchmark restarted the editor.
	UPackage& NodePackage()
	{
		Project();
		if (UPackage* Existing = FindObject<UPackage>(nullptr, PackageName))
		{
			if (FindObject<UStaticMesh>(Existing, TEXT("SM_Nodes")))
			{
				return *Existing;
			}
		}
		UPackage* Package = CreatePackage(PackageName);
		Package->FullyLoad();
		UStaticMesh* Mesh = FindObject<UStaticMesh>(Package, TEXT("SM_Nodes"));
		if (!Mesh)
		{
			Mesh = NewObject<UStaticMesh>(Package, FName(TEXT("SM_Nodes")), RF_Public | RF_Standalone);
			FMeshNaniteSettings Settings = Mesh->GetNaniteSettings();
			Settings.bEnabled = true;
			FNaniteAssemblyData& Data = Settings.NaniteAssemblyData;
			Data.Parts.AddDefaulted_GetRef().MeshObjectPath = FSoftObjectPath(TEXT("/Engine/BasicShapes/Cube.Cube"));
			Data.Nodes.SetNum(NodeCount);
			for (int32 Index = 0; Index < NodeCount; ++Index)
			{
				FNaniteAssemblyNode& Node = Data.Nodes[Index];
				Node.PartIndex = 0;
				Node.Transform = FTransform3f(FRotator3f(0.0f, (float)(Index % 360), 0.0f).Quaternion(), FVector3f((float)Index, 2.0f * Index, 0.5f),
					FVector3f(1.0f, 1.0f + (Index % 3), 1.0f));
			}
			Mesh->SetNaniteSettings(Settings);
			// Built, as an assembly is after its build, so that it can be exported.
			Mesh->SetNumSourceModels(1);
			Mesh->Build(true);
			FStaticMeshCompilingManager::Get().FinishAllCompilation();
		}
		return *Package;
	}

	bool SaveNodePackage()
	{
		TArray<UPackage*> Packages;
		Packages.Add(&NodePackage());
		return UEditorLoadingAndSavingUtils::SavePackages(Packages, false);
	}

	std::unique_ptr<uint8[]> Payload()
	{
		std::unique_ptr<uint8[]> Bytes(new uint8[PayloadBytes]);
		for (int64 Index = 0; Index < PayloadBytes; ++Index)
		{
			Bytes[Index] = (uint8)(Index * 131);
		}
		return Bytes;
	}

	void BM_SavePackages(benchmark::State& State)
	{
		NodePackage();
		for (auto _ : State)
		{
			const int64 Before = LiveHeapBytes.load();
			PeakHeapBytes.store(Before);
			if (!SaveNodePackage())
			{
				State.SkipWithError("SavePackages failed");
				break;
			}
			LargestSaveHeapBytes = std::max(LargestSaveHeapBytes, PeakHeapBytes.load() - Before);
		}
		State.SetBytesProcessed(State.iterations() * PayloadBytes);
	}

	void BM_LoadInNewEditor(benchmark::State& State)
	{
		if (!FPackageName::DoesPackageExist(PackageName) && !SaveNodePackage())
		{
			State.SkipWithError("the package could not be saved");
			return;
		}
		for (auto _ : State)
		{
			State.PauseTiming();
			Project().Stop();
			Project().Start();
			State.ResumeTiming();
			UPackage* Package = LoadPackage(nullptr, PackageName, LOAD_None);
			UStaticMesh* Mesh = Package ? FindObject<UStaticMesh>(Package, TEXT("SM_Nodes")) : nullptr;
			if (!Mesh || Mesh->GetNaniteSettings().NaniteAssemblyData.Nodes.Num() != NodeCount)
			{
				State.SkipWithError("the package did not load whole");
				break;
			}
		}
		State.SetBytesProcessed(State.iterations() * PayloadBytes);
	}

	void BM_ExportGlb(benchmark::State& State)
	{
		const UStaticMesh* Mesh = FindObject<UStaticMesh>(&NodePackage(), TEXT("SM_Nodes"));
		const FString Filename = UE::Headless::FromUtf8(ContentFolder() + "/SM_Nodes.glb");
		for (auto _ : State)
		{
			UE::Headless::FGltfExportSummary Summary;
			FString Error;
			if (!UE::Headless::ExportStaticMeshAsGltf(*Mesh, Filename, UE::Headless::FGltfExportOptions(), Summary, Error))
			{
				State.SkipWithError(UE::Headless::ToUtf8(Error).c_str());
				break;
			}
		}
		State.SetBytesProcessed(State.iterations() * PayloadBytes);
	}

	// The floors: the same payload as raw bytes through the same file system, written as a save writes it.
	void BM_FloorWrite(benchmark::State& State)
	{
		const std::unique_ptr<uint8[]> Bytes = Payload();
		const std::string Path = ContentFolder() + "/Floor.bin.tmp-" + std::to_string(getpid());
		for (auto _ : State)
		{
			const int Descriptor = open(Path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
			const bool bWritten = Descriptor >= 0 && write(Descriptor, Bytes.get(), PayloadBytes) == PayloadBytes && fsync(Descriptor) == 0;
			if (Descriptor >= 0)
			{
				close(Descriptor);
			}
			if (!bWritten)
			{
				State.SkipWithError("the floor's file could not be written");
				break;
			}
		}
		State.SetBytesProcessed(State.iterations() * PayloadBytes);
	}

	void BM_FloorRead(benchmark::State& State)
	{
		const std::string Path = ContentFolder() + "/Floor.bin";
		{
			const std::unique_ptr<uint8[]> Bytes = Payload();
			const int Descriptor = open(Path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
			if (Descriptor < 0 || write(Descriptor, Bytes.get(), PayloadBytes) != PayloadBytes)
			{
				State.SkipWithError("the floor's file could not be written");
				return;
			}
			close(Descriptor);
		}
		for (auto _ : State)
		{
			std::unique_ptr<uint8[]> Bytes(new uint8[PayloadBytes]);
			const int Descriptor = open(Path.c_str(), O_RDONLY | O_CLOEXEC);
			int64 Read = 0;
			for (ssize_t Got = 1; Descriptor >= 0 && Got > 0 && Read < PayloadBytes; Read += Got > 0 ? Got : 0)
			{
				Got = read(Descriptor, Bytes.get() + Read, PayloadBytes - Read);
			}
			if (Descriptor >= 0)
			{
				close(Descriptor);
			}
			if (Read != PayloadBytes)
			{
				State.SkipWithError("the floor's file could not be read");
				break;
			}
			benchmark::DoNotOptimize(Bytes.get());
		}
		State.SetBytesProcessed(State.iterations() * PayloadBytes);
	}
}

BENCHMARK(BM_SavePackages)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_LoadInNewEditor)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_ExportGlb)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_FloorWrite)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_FloorRead)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

void* operator new(std::size_t Size)
{
	if (void* Memory = Allocate(Size, alignof(std::max_align_t)))
	{
		return Memory;
	}
	throw std::bad_alloc();
}

void* operator new[](std::size_t Size)
{
	return operator new(Size);
}

void* operator new(std::size_t Size, std::align_val_t Alignment)
{
	if (void* Memory = Allocate(Size, (std::size_t)Alignment))
	{
		return Memory;
	}
	throw std::bad_alloc();
}

void* operator new[](std::size_t Size, std::align_val_t Alignment)
{
	return operator new(Size, Alignment);
}

void* operator new(std::size_t Size, const std::nothrow_t&) noexcept
{
	return Allocate(Size, alignof(std::max_align_t));
}

void* operator new[](std::size_t Size, const std::nothrow_t&) noexcept
{
	return Allocate(Size, alignof(std::max_align_t));
}

void operator delete(void* Memory) noexcept
{
	Release(Memory);
}

void operator delete[](void* Memory) noexcept
{
	Release(Memory);
}

void operator delete(void* Memory, std::size_t) noexcept
{
	Release(Memory);
}

void operator delete[](void* Memory, std::size_t) noexcept
{
	Release(Memory);
}

void operator delete(void* Memory, std::align_val_t) noexcept
{
	Release(Memory);
}

void operator delete[](void* Memory, std::align_val_t) noexcept
{
	Release(Memory);
}

void operator delete(void* Memory, std::size_t, std::align_val_t) noexcept
{
	Release(Memory);
}

void operator delete[](void* Memory, std::size_t, std::align_val_t) noexcept
{
	Release(Memory);
}

int main(int Argc, char** Argv)
{
	const int Result = RunBenchmarksWithRatios(Argc, Argv, [](const FRatioReporter& Reporter)
	{
		std::printf("A package of %d assembly nodes (one part), relative to its payload of %lld bytes as raw bytes (goal: at most 5x):\n", NodeCount,
			(long long)PayloadBytes);
		Reporter.PrintRatio("  save (SavePackages), to writing the payload with an fsync", "BM_SavePackages/iterations:3/real_time",
			"BM_FloorWrite/iterations:3/real_time");
		Reporter.PrintRatio("  load (LoadPackage in a new editor), to reading the payload", "BM_LoadInNewEditor/iterations:3/real_time",
			"BM_FloorRead/iterations:3/real_time");
		std::printf("%-60s %8.2fx  (goal: at most 1.25x)\n", "  the save's extra peak heap, to the payload", (double)LargestSaveHeapBytes / (double)PayloadBytes);
		std::printf("The same mesh exported as glTF (goal: about 1x):\n");
		Reporter.PrintRatio("  export (.glb, EXT_mesh_gpu_instancing), to the save", "BM_ExportGlb/iterations:3/real_time", "BM_SavePackages/iterations:3/real_time");
	});
	RunningProject.reset();
	return Result;
}
