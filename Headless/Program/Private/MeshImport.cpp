#include "Headless/MeshImport.h"

#include "AssetRegistry/IAssetRegistry.h"
#include "Engine/StaticMesh.h"
#include "Headless/AssetPathCompletion.h"
#include "Headless/MeshFileReader.h"
#include "Headless/StaticMeshGeometry.h"
#include "Headless/UnsavedPackages.h"
#include "Materials/MaterialInterface.h"
#include "Misc/PackageName.h"
#include "Misc/Paths.h"
#include "StaticMeshCompiler.h"
#include "StaticMeshResources.h"
#include "Templates/Casts.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

namespace UE::Headless
{
	namespace
	{
		// Where an import goes, once the destination passed its checks.
		struct FImportTarget
		{
			FString PackageName;
			FString AssetName;
			FString ObjectPath;
			// The mesh there already, to be replaced; null when the import makes a new one.
			UStaticMesh* Existing = nullptr;
		};

		bool Refuse(const FString& Destination, const FString& Reason, FString& OutError)
		{
			OutError = FString::Printf(TEXT("cannot import to '%s': %s"), *Destination, *Reason);
			return false;
		}

		bool FindTarget(const FString& Destination, bool bReplace, FImportTarget& OutTarget, FString& OutError)
		{
			const FString PackageName = CompletePackageName(Destination);
			FText Reason;
			if (!FPackageName::IsValidLongPackageName(PackageName, false, &Reason))
			{
				return Refuse(Destination, FString::Printf(TEXT("it is not a valid package path (%s)"), *Reason.ToString()), OutError);
			}
			FString Filename;
			if (!FPackageName::TryConvertLongPackageNameToFilename(PackageName, Filename)
				|| FPaths::IsUnderDirectory(FPaths::ConvertRelativePathToFull(Filename), FPaths::ConvertRelativePathToFull(FPaths::EngineDir())))
			{
				return Refuse(Destination, TEXT("engine content is read-only; import under /Game/"), OutError);
			}
			OutTarget.PackageName = PackageName;
			OutTarget.AssetName = FPackageName::GetLongPackageAssetName(PackageName);
			OutTarget.ObjectPath = PackageName + TEXT(".") + OutTarget.AssetName;

			// A package only in memory (a script's unsaved build) counts as much as one on disk.
			UObject* Existing = StaticFindObject(UObject::StaticClass(), nullptr, OutTarget.ObjectPath);
			const bool bOnDisk = FPackageName::DoesPackageExist(PackageName);
			if (!Existing && !bOnDisk)
			{
				return true;
			}
			if (!bReplace)
			{
				return Refuse(Destination, FString::Printf(TEXT("%s already exists (replace it with --replace, or replace = true in a script)"), *PackageName), OutError);
			}
			if (!Existing)
			{
				// A file that does not load is replaced whole; its backup keeps it.
				Existing = StaticLoadObject(UObject::StaticClass(), nullptr, OutTarget.ObjectPath, {}, LOAD_Quiet);
			}
			if (Existing && !Existing->IsA(UStaticMesh::StaticClass()))
			{
				return Refuse(Destination, FString::Printf(TEXT("%s is a %s, and an import replaces only a StaticMesh"), *OutTarget.ObjectPath, *Existing->GetClass()->GetName()),
					OutError);
			}
			OutTarget.Existing = Cast<UStaticMesh>(Existing);
			return true;
		}

		// What a replaced mesh was, to put back when the import fails after changing it.
		struct FMeshSnapshot
		{
			explicit FMeshSnapshot(UStaticMesh& InMesh)
				: Mesh(InMesh)
				, Geometry(GetMeshGeometry(InMesh))
				, Materials(InMesh.GetStaticMaterials())
				, NaniteSettings(InMesh.GetNaniteSettings())
				, bPackageDirty(InMesh.GetPackage()->IsDirty())
			{
			}

			void Restore() const
			{
				GetMeshGeometry(Mesh) = Geometry;
				Mesh.SetStaticMaterials(Materials);
				Mesh.SetNaniteSettings(NaniteSettings);
				Mesh.Build(true);
				Mesh.GetPackage()->SetDirtyFlag(bPackageDirty);
			}

			UStaticMesh& Mesh;
			FStaticMeshGeometry Geometry;
			TArray<FStaticMaterial> Materials;
			FMeshNaniteSettings NaniteSettings;
			bool bPackageDirty;
		};

		// The geometry and one slot per polygon group; a replaced mesh also loses what it was before, its Nanite
		// settings and assembly among them.
		void FillMesh(UStaticMesh& Mesh, FStaticMeshGeometry&& Geometry)
		{
			UMaterialInterface* Material = LoadObject<UMaterialInterface>(nullptr, TEXT("/Engine/BasicShapes/BasicShapeMaterial.BasicShapeMaterial"));
			TArray<FStaticMaterial> Slots;
			for (const FName& SlotName : Geometry.PolygonGroupSlotNames)
			{
				Slots.Add(FStaticMaterial(Material, SlotName, SlotName));
			}
			Mesh.SetStaticMaterials(Slots);
			Mesh.SetNaniteSettings(FMeshNaniteSettings());
			GetMeshGeometry(Mesh) = MoveTemp(Geometry);
			Mesh.CommitMeshDescription(0);
			// The import waits for its build, as the editor's does, so that what is saved has its render data.
			TArray<FText> BuildErrors;
			Mesh.Build(true, &BuildErrors);
		}
	}

	bool ImportMeshFile(const FString& Filename, const FString& Destination, bool bReplace, FMeshImportResult& OutResult, FString& OutError)
	{
		FImportTarget Target;
		FStaticMeshGeometry Geometry;
		if (!FindTarget(Destination, bReplace, Target, OutError) || !ReadMeshFile(Filename, Geometry, OutError))
		{
			return false;
		}

		UStaticMesh* Mesh = Target.Existing;
		TUniquePtr<FMeshSnapshot> Snapshot;
		UPackage* Package = nullptr;
		if (Mesh)
		{
			UStaticMesh* Compiling = Mesh;
			FStaticMeshCompilingManager::Get().FinishCompilation(MakeArrayView(&Compiling, 1));
			Snapshot = MakeUnique<FMeshSnapshot>(*Mesh);
			Package = Mesh->GetPackage();
		}
		else
		{
			Package = CreatePackage(*Target.PackageName);
			Mesh = Package ? NewObject<UStaticMesh>(Package, FName(Target.AssetName), RF_Public | RF_Standalone) : nullptr;
			if (!Mesh)
			{
				return Refuse(Destination, TEXT("the editor could not create the mesh"), OutError);
			}
			// As the editor's import does; a script may have taken the registry away.
			if (IAssetRegistry* Registry = IAssetRegistry::Get())
			{
				Registry->AssetCreated(Mesh);
			}
		}
		FillMesh(*Mesh, MoveTemp(Geometry));

		FString SaveError;
		if (!SaveChangedPackages({ Package }, SaveError))
		{
			if (Snapshot)
			{
				Snapshot->Restore();
			}
			else
			{
				Mesh->ClearFlags(RF_Public | RF_Standalone);
				Mesh->MarkAsGarbage();
				Package->SetDirtyFlag(false);
			}
			return Refuse(Destination, FString::Printf(TEXT("the package was not saved: %s"), *SaveError), OutError);
		}

		const FStaticMeshGeometry& Imported = GetMeshGeometry(*Mesh);
		OutResult.ObjectPath = Mesh->GetPathName();
		OutResult.NumVertices = Imported.Positions.Num();
		OutResult.NumTriangles = Imported.Triangles.Num();
		OutResult.SlotNames = Imported.PolygonGroupSlotNames;
		return true;
	}

	FString DescribeImportedMesh(const FMeshImportResult& Result)
	{
		TArray<FString> Names;
		for (const FName& Name : Result.SlotNames)
		{
			Names.Add(Name.ToString());
		}
		return FString::Printf(TEXT("%d vertices, %d triangles, %d material slot%s: %s"), Result.NumVertices, Result.NumTriangles, Result.SlotNames.Num(),
			Result.SlotNames.Num() == 1 ? TEXT("") : TEXT("s"), *FString::Join(Names, TEXT(", ")));
	}
}
