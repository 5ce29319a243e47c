#include "StaticMeshCompiler.h"

#include "Engine/StaticMesh.h"

FStaticMeshCompilingManager& FStaticMeshCompilingManager::Get()
{
	static FStaticMeshCompilingManager Manager;
	return Manager;
}

void FStaticMeshCompilingManager::FinishCompilation(TArrayView<UStaticMesh* const> InStaticMeshes, const FFinishCompilationOptions& Options)
{
	for (UStaticMesh* Mesh : InStaticMeshes)
	{
		if (Mesh && PendingMeshes.Contains(Mesh))
		{
			PendingMeshes.Remove(Mesh);
			Mesh->FinishBuild();
		}
	}
}

void FStaticMeshCompilingManager::FinishAllCompilation()
{
	while (PendingMeshes.Num() > 0)
	{
		UStaticMesh* Mesh = PendingMeshes[0];
		PendingMeshes.RemoveAt(0);
		Mesh->FinishBuild();
	}
}

void FStaticMeshCompilingManager::ProcessAsyncTasks(bool bLimitExecutionTime)
{
	FinishAllCompilation();
}

int32 FStaticMeshCompilingManager::GetNumRemainingMeshes() const
{
	return PendingMeshes.Num();
}

bool FStaticMeshCompilingManager::IsAsyncStaticMeshCompilationEnabled() const
{
	return true;
}

void FStaticMeshCompilingManager::AddStaticMesh(UStaticMesh* StaticMesh)
{
	PendingMeshes.AddUnique(StaticMesh);
}

void FStaticMeshCompilingManager::RemoveStaticMesh(UStaticMesh* StaticMesh)
{
	PendingMeshes.Remove(StaticMesh);
}
