#include "Build/NaniteAssemblyBuildExecution.h"

#include "AssetRegistry/IAssetRegistry.h"
#include "Build/NaniteAssemblyValidation.h"
#include "Editor.h"
#include "Engine/StaticMesh.h"
#include "FileHelpers.h"
#include "Query/NaniteAssemblyPluginStatus.h"
#include "LuaSessionData.h"
#include "NaniteAssemblyStaticMeshBuilder.h"
#include "Request/NaniteAssemblyBuildRequest.h"
#include "ScopedTransaction.h"
#include "StaticMeshCompiler.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	void FillOutcome(FNaniteAssemblyBuildOutcome& Outcome, UStaticMesh* Mesh, const FNaniteAssemblyBuildPlan& Plan, bool bCreated)
	{
		Outcome.Mesh = Mesh;
		Outcome.PackageName = Plan.PackageName;
		Outcome.ObjectPath = Plan.ObjectPath;
		Outcome.bCreated = bCreated;
		Outcome.bOverwritten = !bCreated;
	}

	// Steps 8 to 16 of a build: everything inside the build's own transaction.
	bool RunBuilderInTransaction(const FNaniteAssemblyBuildPlan& Plan, UPackage* Package, const FPackageDirtySnapshot& DirtySnapshot,
		FNaniteAssemblyBuildOutcome& OutOutcome, UStaticMesh*& OutMesh, bool& bOutCreated, FString& OutError)
	{
		const bool bOwnsTransaction = !GEditor->IsTransactionActive();
		FScopedTransaction Transaction(NSLOCTEXT("Corvane", "NaniteAssemblyBuild", "Build Nanite Assembly"), true);
		OutOutcome.bTransactionOwned = bOwnsTransaction;

		UStaticMesh* Mesh = Plan.ExistingMesh;
		bool bAddedTransactional = false;
		if (Mesh)
		{
			bAddedTransactional = !Mesh->HasAnyFlags(RF_Transactional);
			Mesh->SetFlags(RF_Transactional);
		}
		else
		{
			Package->FullyLoad();
			Mesh = NewObject<UStaticMesh>(Package, FName(Plan.AssetName), RF_Public | RF_Standalone | RF_Transactional);
			if (!Mesh)
			{
				DirtySnapshot.Restore();
				if (bOwnsTransaction)
				{
					Transaction.Cancel();
				}
				OutError = FString::Printf(TEXT("failed to create StaticMesh '%s'"), *Plan.ObjectPath);
				return false;
			}
			bOutCreated = true;
		}

		// The transaction records the mesh as it was before the builder touches it.
		Mesh->Modify(true);

		const FNaniteAssemblyAbortContext Abort{ bOwnsTransaction, bOutCreated, Mesh, bAddedTransactional, DirtySnapshot, Transaction, OutError };
		UNaniteAssemblyStaticMeshBuilder* Builder = UNaniteAssemblyStaticMeshBuilder::BeginEditStaticMeshAssemblyBuild(Mesh);
		if (!Builder)
		{
			return AbortNaniteAssemblyBuild(Abort, TEXT("BeginEditStaticMeshAssemblyBuild refused the target mesh (see LogNaniteAssemblyBuilder)"));
		}
		for (int32 Index = 0; Index < Plan.Parts.Num(); ++Index)
		{
			const FNaniteAssemblyResolvedPart& Part = Plan.Parts[Index];
			if (!Builder->AddAssemblyParts(Part.Mesh, TArrayView<const FTransform>(Part.Transforms), Part.MergeOptions))
			{
				return AbortNaniteAssemblyBuild(Abort, FString::Printf(TEXT("AddAssemblyParts refused parts[%d] '%s' (see LogNaniteAssemblyBuilder)"), Index + 1,
					*Part.Mesh->GetPathName()));
			}
		}
		UStaticMesh* FinishedMesh = nullptr;
		if (!Builder->FinishAssemblyBuild(FinishedMesh) || FinishedMesh != Mesh)
		{
			return AbortNaniteAssemblyBuild(Abort, TEXT("FinishAssemblyBuild failed (no assembly parts were applied)"));
		}

		if (bOutCreated)
		{
			if (IAssetRegistry* AssetRegistry = IAssetRegistry::Get())
			{
				AssetRegistry->AssetCreated(Mesh);
			}
		}
		Package->MarkPackageDirty();
		OutMesh = Mesh;
		return true;
	}
}

void FPackageDirtySnapshot::Add(UPackage* Package)
{
	if (Package && !Entries.ContainsByPredicate([Package](const TPair<UPackage*, bool>& Entry) { return Entry.Key == Package; }))
	{
		Entries.Add(TPair<UPackage*, bool>(Package, Package->IsDirty()));
	}
}

void FPackageDirtySnapshot::Restore() const
{
	for (const TPair<UPackage*, bool>& Entry : Entries)
	{
		Entry.Key->SetDirtyFlag(Entry.Value);
	}
}

bool AbortNaniteAssemblyBuild(const FNaniteAssemblyAbortContext& Context, const FString& Message)
{
	if (Context.bOwnsTransaction)
	{
		if (Context.bCreated)
		{
			Context.Mesh->ClearFlags(RF_Public | RF_Standalone);
			Context.Mesh->MarkAsGarbage();
		}
		else if (Context.bAddedTransactional)
		{
			Context.Mesh->ClearFlags(RF_Transactional);
		}
		Context.DirtySnapshot.Restore();
		// Cancelling throws the record away but reverts nothing, which is why the changes above come first.
		Context.Transaction.Cancel();
		Context.Error = Message;
	}
	else
	{
		Context.Error = Message + TEXT("; ran inside an outer transaction, Undo retained");
	}
	return false;
}

bool ExecuteNaniteAssemblyBuild(const FNaniteAssemblyBuildRequest& Request, FLuaSessionData& Session, FNaniteAssemblyBuildOutcome& OutOutcome, FString& OutError)
{
	OutOutcome = FNaniteAssemblyBuildOutcome();

	const FNaniteAssemblyPluginStatus Status = GetNaniteAssemblyPluginStatus();
	if (!Status.bAvailable)
	{
		OutError = Status.Reason;
		return false;
	}
	if (!GEditor)
	{
		OutError = TEXT("no editor instance (GEditor is null)");
		return false;
	}

	FNaniteAssemblyBuildPlan Plan;
	if (!ValidateNaniteAssemblyRequest(Request, Plan, OutError))
	{
		return false;
	}

	UPackage* Package = Plan.ExistingMesh ? Plan.ExistingMesh->GetOutermost() : CreatePackage(*Plan.PackageName);
	if (!Package)
	{
		OutError = FString::Printf(TEXT("cannot create package '%s'"), *Plan.PackageName);
		return false;
	}
	if (!Session.EnsurePackageEditable(Package, TEXT("nanite_assembly_build"), false))
	{
		OutError = FString::Printf(TEXT("package '%s' is not editable: %s"), *Plan.PackageName, *Session.LastError);
		return false;
	}

	FPackageDirtySnapshot DirtySnapshot;
	DirtySnapshot.Add(Package->GetPackage());
	DirtySnapshot.Add(Package->GetOutermost());
	if (Plan.ExistingMesh)
	{
		DirtySnapshot.Add(Plan.ExistingMesh->GetPackage());
		DirtySnapshot.Add(Plan.ExistingMesh->GetOutermost());
	}

	UStaticMesh* Mesh = nullptr;
	bool bCreated = false;
	if (!RunBuilderInTransaction(Plan, Package, DirtySnapshot, OutOutcome, Mesh, bCreated, OutError))
	{
		return false;
	}

	// From here on nothing is inside the build's transaction. A save always waits for the compile.
	if (Request.bWaitForCompile || Request.bSave)
	{
		FStaticMeshCompilingManager::Get().FinishCompilation(MakeArrayView(&Mesh, 1));
	}
	OutOutcome.bCompiled = !Mesh->IsCompiling();
	FillOutcome(OutOutcome, Mesh, Plan, bCreated);
	if (!Request.bSave)
	{
		return true;
	}

	if (!Session.EnsurePackageEditable(Package, TEXT("nanite_assembly_build save"), true))
	{
		OutError = FString::Printf(TEXT("built '%s' but package is not editable for save: %s"), *Plan.ObjectPath, *Session.LastError);
		return false;
	}
	TArray<UPackage*> PackagesToSave;
	PackagesToSave.Add(Package);
	if (!UEditorLoadingAndSavingUtils::SavePackages(PackagesToSave, false))
	{
		OutError = FString::Printf(TEXT("built '%s' but failed to save package '%s' to disk"), *Plan.ObjectPath, *Plan.PackageName);
		return false;
	}
	OutOutcome.bSaved = true;
	return true;
}
