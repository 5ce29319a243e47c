#include "Build/NaniteAssemblyBuild.h"

#include "AssetRegistry/IAssetRegistry.h"
#include "Editor.h"
#include "Engine/StaticMesh.h"
#include "FileHelpers.h"
#include "LuaSessionData.h"
#include "Materials/MaterialInterface.h"
#include "Misc/PackageName.h"
#include "Misc/Paths.h"
#include "NaniteAssemblyStaticMeshBuilder.h"
#include "Request/NaniteAssemblyBuildRequest.h"
#include "ScopedTransaction.h"
#include "Shared/NaniteAssemblyAssetPaths.h"
#include "StaticMeshCompiler.h"
#include "Templates/Casts.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

namespace CVAI::NaniteAssembly
{
	namespace
	{
		bool ValidateOutput(const FNaniteAssemblyBuildRequest& Request, FNaniteAssemblyBuildPlan& Plan, FString& OutError)
		{
			const FString& GivenOutput = Request.Output;
			const FString PackageName = ToPackagePath(GivenOutput);
			FText Reason;
			if (PackageName.IsEmpty() || !FPackageName::IsValidLongPackageName(PackageName, false, &Reason))
			{
				OutError = FString::Printf(TEXT("output '%s' is not a valid writable package path (%s)"), *GivenOutput, *Reason.ToString());
				return false;
			}

			// A root that maps to no folder is refused like the engine's own content, and so is the content of
			// any plugin whose folder lies under the engine's.
			FString Filename;
			if (!FPackageName::TryConvertLongPackageNameToFilename(PackageName, Filename)
				|| FPaths::IsUnderDirectory(FPaths::ConvertRelativePathToFull(Filename), FPaths::ConvertRelativePathToFull(FPaths::EngineDir())))
			{
				OutError = FString::Printf(TEXT("output '%s' is not a valid writable package path (engine content is read-only for this verb; use /Game/...)"),
					*GivenOutput);
				return false;
			}

			const FString AssetName = FPackageName::GetLongPackageAssetName(PackageName);
			if (AssetName.IsEmpty())
			{
				OutError = FString::Printf(TEXT("output '%s' has no asset name"), *GivenOutput);
				return false;
			}
			const FString ObjectPath = PackageName + TEXT(".") + AssetName;

			UObject* Existing = StaticFindObject(UObject::StaticClass(), nullptr, ObjectPath);
			if (!Existing && FPackageName::DoesPackageExist(PackageName))
			{
				Existing = StaticLoadObject(UObject::StaticClass(), nullptr, ObjectPath);
			}
			if (Existing)
			{
				if (!Existing->GetClass()->IsChildOf(UStaticMesh::StaticClass()))
				{
					OutError = FString::Printf(TEXT("output '%s' already exists and is a %s, not a StaticMesh"), *ObjectPath, *Existing->GetClass()->GetName());
					return false;
				}
				if (!Request.bOverwrite)
				{
					OutError = FString::Printf(TEXT("output '%s' already exists; pass overwrite=true to rebuild its assembly parts"), *ObjectPath);
					return false;
				}
				Plan.ExistingMesh = Cast<UStaticMesh>(Existing);
			}
			Plan.PackageName = PackageName;
			Plan.AssetName = AssetName;
			Plan.ObjectPath = ObjectPath;
			return true;
		}

		bool ValidatePart(const FNaniteAssemblyPartRequest& Part, int32 Position, const FNaniteAssemblyBuildPlan& Plan, FNaniteAssemblyResolvedPart& OutPart,
			FString& OutError)
		{
			const FString Label = FString::Printf(TEXT("parts[%d]"), Position);
			if (Part.MeshPath.IsEmpty())
			{
				OutError = Label + TEXT(": mesh path is empty");
				return false;
			}
			if (Part.Transforms.IsEmpty())
			{
				OutError = Label + TEXT(": transforms is empty; every part needs at least one transform");
				return false;
			}
			// All twelve stored lanes count; infinities get the same words on purpose.
			for (int32 Index = 0; Index < Part.Transforms.Num(); ++Index)
			{
				if (Part.Transforms[Index].ContainsNaN())
				{
					OutError = FString::Printf(TEXT("%s.transforms[%d]: contains NaN"), *Label, Index + 1);
					return false;
				}
			}

			UStaticMesh* Mesh = LoadStaticMeshByPath(Part.MeshPath);
			if (!Mesh)
			{
				if (UObject* Other = LoadObjectByPath(Part.MeshPath))
				{
					OutError = FString::Printf(TEXT("%s: '%s' is a %s, not a StaticMesh"), *Label, *Part.MeshPath, *Other->GetClass()->GetName());
				}
				else
				{
					OutError = FString::Printf(TEXT("%s: static mesh not found: %s"), *Label, *Part.MeshPath);
				}
				return false;
			}
			const UPackage* MeshPackage = Mesh->GetOutermost();
			if (MeshPackage == GetTransientPackage() || (MeshPackage && MeshPackage->HasAnyFlags(RF_Transient)))
			{
				OutError = FString::Printf(TEXT("%s: '%s' lives in a transient package and could not be reloaded by the assembly build"), *Label, *Mesh->GetPathName());
				return false;
			}
			if (Mesh->IsNaniteAssembly())
			{
				OutError = FString::Printf(TEXT("%s: '%s' is itself a Nanite Assembly; assemblies of assemblies are not supported"), *Label, *Mesh->GetPathName());
				return false;
			}
			if (Mesh->GetPathName().Equals(Plan.ObjectPath, ESearchCase::IgnoreCase) || Mesh == Plan.ExistingMesh)
			{
				OutError = FString::Printf(TEXT("%s: '%s' is the output mesh; the target cannot be one of its own parts"), *Label, *Mesh->GetPathName());
				return false;
			}

			OutPart.Mesh = Mesh;
			OutPart.Transforms = Part.Transforms;
			OutPart.MergeOptions.MaterialSlotGroup = 0;
			OutPart.MergeOptions.MergeBehavior = (ENaniteAssemblyPartMaterialMerge)(uint8)Part.MaterialMerge;
			for (int32 Index = 0; Index < Part.MaterialOverrides.Num(); ++Index)
			{
				UMaterialInterface* Material = LoadMaterialByPath(Part.MaterialOverrides[Index]);
				if (!Material)
				{
					OutError = FString::Printf(TEXT("%s.material_overrides[%d]: material not found: %s"), *Label, Index + 1, *Part.MaterialOverrides[Index]);
					return false;
				}
				OutPart.MergeOptions.MaterialOverrides.Add(Material);
			}
			return true;
		}
	}

	bool ValidateNaniteAssemblyRequest(const FNaniteAssemblyBuildRequest& Request, FNaniteAssemblyBuildPlan& OutPlan, FString& OutError)
	{
		OutPlan = FNaniteAssemblyBuildPlan();
		if (Request.Parts.IsEmpty())
		{
			OutError = TEXT("no parts given; at least one part with one transform is required");
			return false;
		}
		FNaniteAssemblyBuildPlan Plan;
		if (!ValidateOutput(Request, Plan, OutError))
		{
			return false;
		}
		for (int32 Index = 0; Index < Request.Parts.Num(); ++Index)
		{
			if (!ValidatePart(Request.Parts[Index], Index + 1, Plan, Plan.Parts.AddDefaulted_GetRef(), OutError))
			{
				return false;
			}
		}
		OutPlan = MoveTemp(Plan);
		return true;
	}

	namespace
	{
		// The dirty flags of the packages a build touches, as they stood before it, in the order first seen.
		class FPackageDirtySnapshot
		{
		public:
			// Null packages and packages already entered are skipped.
			void Add(UPackage* Package)
			{
				if (Package && !Entries.ContainsByPredicate([Package](const TPair<UPackage*, bool>& Entry) { return Entry.Key == Package; }))
				{
					Entries.Add(TPair<UPackage*, bool>(Package, Package->IsDirty()));
				}
			}

			void Restore() const
			{
				for (const TPair<UPackage*, bool>& Entry : Entries)
				{
					Entry.Key->SetDirtyFlag(Entry.Value);
				}
			}

		private:
			TArray<TPair<UPackage*, bool>> Entries;
		};

		// What a roll-back needs to know of the build it takes back.
		struct FAbortContext
		{
			bool bOwnsTransaction = false;
			bool bCreated = false;
			UStaticMesh* Mesh = nullptr;
			bool bAddedTransactional = false;
			const FPackageDirtySnapshot& DirtySnapshot;
			FScopedTransaction& Transaction;
		};

		// Puts the dirty flags back and, when the build owns its transaction, throws the transaction's record
		// away. Cancelling reverts nothing, which is why a roll-back takes its own changes back first.
		void DiscardTransaction(bool bOwnsTransaction, const FPackageDirtySnapshot& DirtySnapshot, FScopedTransaction& Transaction)
		{
			DirtySnapshot.Restore();
			if (bOwnsTransaction)
			{
				Transaction.Cancel();
			}
		}

		// Takes back what a failed build did when it owns the transaction; inside a caller's transaction it
		// touches nothing and only says so in the message. Always false.
		bool AbortNaniteAssemblyBuild(const FAbortContext& Context, const FString& Message, FString& OutError)
		{
			if (!Context.bOwnsTransaction)
			{
				OutError = Message + TEXT("; ran inside an outer transaction, Undo retained");
				return false;
			}
			if (Context.bCreated)
			{
				Context.Mesh->ClearFlags(RF_Public | RF_Standalone);
				Context.Mesh->MarkAsGarbage();
			}
			else if (Context.bAddedTransactional)
			{
				Context.Mesh->ClearFlags(RF_Transactional);
			}
			DiscardTransaction(Context.bOwnsTransaction, Context.DirtySnapshot, Context.Transaction);
			OutError = Message;
			return false;
		}

		// The mesh a build made or edited inside its own transaction.
		struct FBuiltMesh
		{
			UStaticMesh* Mesh = nullptr;
			bool bCreated = false;
		};

		// Everything that happens inside the build's own transaction: the target mesh, the builder's Begin, one
		// AddAssemblyParts per part and Finish, the asset registry and the package's dirty flag. A null mesh
		// means it failed, with the message in OutError.
		FBuiltMesh BuildInTransaction(const FNaniteAssemblyBuildPlan& Plan, UPackage& Package, const FPackageDirtySnapshot& DirtySnapshot,
			bool bOwnsTransaction, FString& OutError)
		{
			FScopedTransaction Transaction(NSLOCTEXT("Corvane", "NaniteAssemblyBuild", "Build Nanite Assembly"), true);
			FAbortContext Abort{ bOwnsTransaction, false, Plan.ExistingMesh, false, DirtySnapshot, Transaction };
			if (Abort.Mesh)
			{
				Abort.bAddedTransactional = !Abort.Mesh->HasAnyFlags(RF_Transactional);
				Abort.Mesh->SetFlags(RF_Transactional);
			}
			else
			{
				Package.FullyLoad();
				Abort.Mesh = NewObject<UStaticMesh>(&Package, FName(Plan.AssetName), RF_Public | RF_Standalone | RF_Transactional);
				if (!Abort.Mesh)
				{
					// Nothing was made to take back; a caller's transaction gets no note for this.
					DiscardTransaction(bOwnsTransaction, DirtySnapshot, Transaction);
					OutError = FString::Printf(TEXT("failed to create StaticMesh '%s'"), *Plan.ObjectPath);
					return FBuiltMesh();
				}
				Abort.bCreated = true;
			}
			UStaticMesh* Mesh = Abort.Mesh;

			// The transaction records the mesh as it was before the builder touches it.
			Mesh->Modify(true);

			UNaniteAssemblyStaticMeshBuilder* Builder = UNaniteAssemblyStaticMeshBuilder::BeginEditStaticMeshAssemblyBuild(Mesh);
			if (!Builder)
			{
				AbortNaniteAssemblyBuild(Abort, TEXT("BeginEditStaticMeshAssemblyBuild refused the target mesh (see LogNaniteAssemblyBuilder)"), OutError);
				return FBuiltMesh();
			}
			for (int32 Index = 0; Index < Plan.Parts.Num(); ++Index)
			{
				const FNaniteAssemblyResolvedPart& Part = Plan.Parts[Index];
				if (!Builder->AddAssemblyParts(Part.Mesh, TArrayView<const FTransform>(Part.Transforms), Part.MergeOptions))
				{
					AbortNaniteAssemblyBuild(Abort,
						FString::Printf(TEXT("AddAssemblyParts refused parts[%d] '%s' (see LogNaniteAssemblyBuilder)"), Index + 1, *Part.Mesh->GetPathName()),
						OutError);
					return FBuiltMesh();
				}
			}
			UStaticMesh* FinishedMesh = nullptr;
			if (!Builder->FinishAssemblyBuild(FinishedMesh) || FinishedMesh != Mesh)
			{
				AbortNaniteAssemblyBuild(Abort, TEXT("FinishAssemblyBuild failed (no assembly parts were applied)"), OutError);
				return FBuiltMesh();
			}

			if (Abort.bCreated)
			{
				if (IAssetRegistry* AssetRegistry = IAssetRegistry::Get())
				{
					AssetRegistry->AssetCreated(Mesh);
				}
			}
			Package.MarkPackageDirty();
			return FBuiltMesh{ Mesh, Abort.bCreated };
		}
	}

	bool ExecuteNaniteAssemblyBuild(const FNaniteAssemblyBuildRequest& Request, FLuaSessionData& Session, FNaniteAssemblyBuildOutcome& OutOutcome,
		FString& OutError)
	{
		OutOutcome = FNaniteAssemblyBuildOutcome();
		OutOutcome.Status = GetNaniteAssemblyPluginStatus();
		if (!OutOutcome.Status.bAvailable)
		{
			OutError = OutOutcome.Status.Reason;
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

		// A build owns its transaction unless a caller's is open; then the caller's is the one that rolls back.
		OutOutcome.bTransactionOwned = !GEditor->IsTransactionActive();
		const FBuiltMesh Built = BuildInTransaction(Plan, *Package, DirtySnapshot, OutOutcome.bTransactionOwned, OutError);
		if (!Built.Mesh)
		{
			return false;
		}

		// From here on nothing is inside the build's transaction. A save always waits for the compile.
		UStaticMesh* Mesh = Built.Mesh;
		if (Request.bWaitForCompile || Request.bSave)
		{
			FStaticMeshCompilingManager::Get().FinishCompilation(MakeArrayView(&Mesh, 1));
		}
		OutOutcome.bCompiled = !Mesh->IsCompiling();
		OutOutcome.Mesh = Mesh;
		OutOutcome.PackageName = Plan.PackageName;
		OutOutcome.ObjectPath = Plan.ObjectPath;
		OutOutcome.bCreated = Built.bCreated;
		OutOutcome.bOverwritten = !Built.bCreated;
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
}
