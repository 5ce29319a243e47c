// The asynchronous compilation of static meshes. Builds are queued and finish on the next editor tick or
// when waited for; nothing depends on wall-clock time.
#pragma once

#include "Containers/Array.h"
#include "Containers/ArrayView.h"

class UStaticMesh;

class FStaticMeshCompilingManager
{
public:
	struct FFinishCompilationOptions
	{
		// Spelled out: GCC cannot use a nested struct's member initialisers in a default argument of the
		// enclosing class.
		FFinishCompilationOptions()
			: bIncludeDependentMeshes(false)
		{
		}

		bool bIncludeDependentMeshes;
	};

	ENGINE_API static FStaticMeshCompilingManager& Get();

	// Blocks until the listed meshes' builds are done.
	ENGINE_API void FinishCompilation(TArrayView<UStaticMesh* const> InStaticMeshes, const FFinishCompilationOptions& Options = FFinishCompilationOptions());
	ENGINE_API void FinishAllCompilation();
	// Finishes the builds that are ready: with no worker threads here, every queued build is ready.
	ENGINE_API void ProcessAsyncTasks(bool bLimitExecutionTime = false);
	[[nodiscard]] ENGINE_API int32 GetNumRemainingMeshes() const;
	[[nodiscard]] ENGINE_API bool IsAsyncStaticMeshCompilationEnabled() const;

private:
	friend class UStaticMesh;

	void AddStaticMesh(UStaticMesh* StaticMesh);
	void RemoveStaticMesh(UStaticMesh* StaticMesh);

	TArray<UStaticMesh*> PendingMeshes;
};
