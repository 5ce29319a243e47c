#include "Headless/GltfExport.h"

#include "Engine/StaticMesh.h"
#include "GltfDocument.h"
#include "GltfFileWriter.h"
#include "GltfMaterials.h"
#include "GltfMeshes.h"
#include "GltfNodes.h"
#include "Headless/PackageLoadFaults.h"
#include "Headless/StaticMeshGeometry.h"
#include "Headless/StringUtils.h"
#include "StaticMeshResources.h"
#include "Templates/Casts.h"

namespace UE::Headless
{
	namespace
	{
		// The glTF material that each slot of a part draws with: the part's slot goes through the remap to the
		// assembly's slot, whose material the assembly gives. An empty remap keeps the slots as they are.
		TArray<int32> GetPartMaterials(const UStaticMesh& PartMesh, const FNaniteAssemblyPart& Part, const TArray<int32>& AssemblyMaterials)
		{
			TArray<int32> Materials;
			for (int32 Slot = 0; Slot < PartMesh.GetStaticMaterials().Num(); ++Slot)
			{
				const int32 AssemblySlot = Part.MaterialRemap.IsEmpty() ? Slot : (Part.MaterialRemap.IsValidIndex(Slot) ? Part.MaterialRemap[Slot] : INDEX_NONE);
				Materials.Add(AssemblyMaterials.IsValidIndex(AssemblySlot) ? AssemblyMaterials[AssemblySlot] : INDEX_NONE);
			}
			return Materials;
		}

		const UStaticMesh* LoadPartMesh(const FNaniteAssemblyPart& Part, int32 PartIndex, FString& OutError)
		{
			const FString Path = Part.MeshObjectPath.ToString();
			const UStaticMesh* PartMesh = Cast<UStaticMesh>(Part.MeshObjectPath.TryLoad());
			if (!PartMesh)
			{
				const FString Fault = GetPackageLoadFault(Part.MeshObjectPath.GetLongPackageName());
				OutError = FString::Printf(TEXT("part %d: its mesh '%s' cannot be loaded%s%s"), PartIndex + 1, *Path, Fault.IsEmpty() ? TEXT("") : TEXT(": "), *Fault);
				return nullptr;
			}
			if (!PartMesh->GetRenderData())
			{
				OutError = FString::Printf(TEXT("part %d: its mesh '%s' has not been built"), PartIndex + 1, *Path);
				return nullptr;
			}
			return PartMesh;
		}

		bool AddAssembly(FGltfDocument& Document, const UStaticMesh& Mesh, const FGltfExportOptions& Options, FGltfExportSummary& OutSummary, FString& OutError)
		{
			const TArray<int32> AssemblyMaterials = AddGltfMaterials(Document, Mesh.GetStaticMaterials());
			// The assembly's own triangles draw beside its parts; a new assembly has none, only the placeholders
			// that give each slot a section.
			const FStaticMeshGeometry& OwnGeometry = GetMeshGeometry(Mesh);
			if (OwnGeometry.CountRealTriangles() > 0)
			{
				const std::string Name = ToUtf8(Mesh.GetPathName());
				AddGltfMeshNode(Document, AddGltfMesh(Document, OwnGeometry, AssemblyMaterials, Name), Name);
				++OutSummary.NumInstances;
			}

			const FNaniteAssemblyData& Assembly = Mesh.GetNaniteSettings().NaniteAssemblyData;
			std::vector<FGltfPart> Parts;
			for (int32 PartIndex = 0; PartIndex < Assembly.Parts.Num(); ++PartIndex)
			{
				const FNaniteAssemblyPart& Part = Assembly.Parts[PartIndex];
				const UStaticMesh* PartMesh = LoadPartMesh(Part, PartIndex, OutError);
				if (!PartMesh)
				{
					return false;
				}
				FGltfPart& Entry = Parts.emplace_back();
				Entry.Name = ToUtf8(PartMesh->GetPathName());
				Entry.Mesh = AddGltfMesh(Document, GetMeshGeometry(*PartMesh), GetPartMaterials(*PartMesh, Part, AssemblyMaterials), Entry.Name);
				if (Entry.Mesh == INDEX_NONE)
				{
					OutError = FString::Printf(TEXT("part %d: its mesh '%s' has no triangles"), PartIndex + 1, *PartMesh->GetPathName());
					return false;
				}
			}
			OutSummary.NumInstances += (int32)AddGltfInstances(Document, Assembly.Nodes, Parts, Options.bInstancing);
			return true;
		}

		bool AddPlainMesh(FGltfDocument& Document, const UStaticMesh& Mesh, FGltfExportSummary& OutSummary, FString& OutError)
		{
			const std::string Name = ToUtf8(Mesh.GetPathName());
			const int32 GltfMesh = AddGltfMesh(Document, GetMeshGeometry(Mesh), AddGltfMaterials(Document, Mesh.GetStaticMaterials()), Name);
			if (GltfMesh == INDEX_NONE)
			{
				OutError = FString::Printf(TEXT("'%s' has no triangles"), *Mesh.GetPathName());
				return false;
			}
			AddGltfMeshNode(Document, GltfMesh, Name);
			OutSummary.NumInstances = 1;
			return true;
		}
	}

	bool IsGltfFilename(const FString& Filename)
	{
		return Filename.EndsWith(TEXT(".glb")) || Filename.EndsWith(TEXT(".gltf"));
	}

	bool ExportStaticMeshAsGltf(const UStaticMesh& Mesh, const FString& Filename, const FGltfExportOptions& Options, FGltfExportSummary& OutSummary,
		FString& OutError)
	{
		OutSummary = FGltfExportSummary();
		if (!IsGltfFilename(Filename))
		{
			OutError = FString::Printf(TEXT("'%s' is neither a .glb nor a .gltf file"), *Filename);
			return false;
		}
		if (!Mesh.GetRenderData())
		{
			OutError = FString::Printf(TEXT("'%s' has not been built"), *Mesh.GetPathName());
			return false;
		}
		FGltfDocument Document;
		if (Mesh.IsNaniteAssembly() ? !AddAssembly(Document, Mesh, Options, OutSummary, OutError) : !AddPlainMesh(Document, Mesh, OutSummary, OutError))
		{
			return false;
		}
		OutSummary.NumMeshes = (int32)Document.GetModel().meshes.size();
		OutSummary.NumMaterials = (int32)Document.GetModel().materials.size();
		return WriteGltfFile(Document, Filename, Filename.EndsWith(TEXT(".glb")), OutSummary.NumBytes, OutError);
	}
}
