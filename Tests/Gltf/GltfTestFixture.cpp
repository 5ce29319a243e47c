#include "GltfTestFixture.h"

#include "Engine/StaticMesh.h"
#include "FileHelpers.h"
#include "Headless/GltfExport.h"
#include "Headless/StringUtils.h"
#include "Headless/YUpFrame.h"
#include "Materials/MaterialInterface.h"
#include "StaticMeshCompiler.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <filesystem>
#include <sstream>

using UE::Headless::FromUtf8;
using UE::Headless::ToUtf8;

namespace GltfTest
{
	namespace
	{
		UMaterialInterface* BasicShapeMaterial()
		{
			return LoadObject<UMaterialInterface>(nullptr, TEXT("/Engine/BasicShapes/BasicShapeMaterial.BasicShapeMaterial"));
		}
	}

	UE::Headless::FStaticMeshGeometry MakePanelGeometry()
	{
		UE::Headless::FStaticMeshGeometry Geometry;
		Geometry.NumSourceModels = 1;
		Geometry.bHasMeshDescription = true;
		const FVector3f Up(0, 0, 1);
		const FVector3f Back(-1, 0, 0);
		const struct
		{
			FVector3f Position;
			FVector3f Normal;
			FVector2f UV;
		} Vertices[] = {
			{ { 0, 0, 30 }, Up, { 0.0f, 0.0f } },
			{ { 0, 50, 30 }, Up, { 0.0f, 1.0f } },
			{ { 80, 0, 30 }, Up, { 1.0f, 0.0f } },
			{ { 80, 50, 30 }, Up, { 1.0f, 1.0f } },
			{ { 0, 0, 0 }, Back, { 0.25f, 0.5f } },
			{ { 0, 50, 0 }, Back, { 0.75f, 0.5f } },
			{ { 0, 0, 30 }, Back, { 0.25f, 0.125f } },
			{ { 0, 50, 30 }, Back, { 0.75f, 0.125f } },
		};
		for (const auto& Vertex : Vertices)
		{
			Geometry.Positions.Add(Vertex.Position);
			Geometry.Normals.Add(Vertex.Normal);
			Geometry.UVs.Add(Vertex.UV);
		}
		// Front faces as the engine winds them: the outward normal is (C - A) x (B - A).
		const int32 Corners[][4] = { { 0, 1, 2, 0 }, { 1, 3, 2, 0 }, { 4, 5, 6, 1 }, { 4, 4, 5, 1 }, { 5, 7, 6, 1 } };
		for (const int32* Triangle : Corners)
		{
			UE::Headless::FMeshTriangle& Added = Geometry.Triangles.AddDefaulted_GetRef();
			Added.VertexIndices[0] = Triangle[0];
			Added.VertexIndices[1] = Triangle[1];
			Added.VertexIndices[2] = Triangle[2];
			Added.PolygonGroup = Triangle[3];
		}
		Geometry.PolygonGroupSlotNames = { FName(TEXT("Top")), FName(TEXT("Side")) };
		Geometry.SectionMaterialIndices = { 0, 1 };
		return Geometry;
	}

	UStaticMesh* MakeMesh(const TCHAR* PackageName, const TCHAR* Name, const UE::Headless::FStaticMeshGeometry& Geometry, const TArray<FName>& Slots)
	{
		UPackage* Package = CreatePackage(PackageName);
		UStaticMesh* Mesh = NewObject<UStaticMesh>(Package, FName(Name), RF_Public | RF_Standalone);
		TArray<FStaticMaterial> Materials;
		for (const FName& Slot : Slots)
		{
			Materials.Add(FStaticMaterial(BasicShapeMaterial(), Slot, Slot));
		}
		Mesh->SetStaticMaterials(Materials);
		UE::Headless::GetMeshGeometry(*Mesh) = Geometry;
		Mesh->Build(true);
		FStaticMeshCompilingManager::Get().FinishAllCompilation();
		TArray<UPackage*> Packages;
		Packages.Add(Package);
		UEditorLoadingAndSavingUtils::SavePackages(Packages, false);
		return Mesh;
	}

	const tinygltf::Node& RootNode(const tinygltf::Model& Model, size_t Index)
	{
		return Model.nodes.at(Model.scenes.at(Model.defaultScene).nodes.at(Index));
	}

	void FGltfTestFixture::SetUpTestSuite()
	{
		Project = new FTestProject();
		ASSERT_TRUE(Project->Start());
		Session = new FTestSession(*Project);
		MakeMesh(TEXT("/Game/Test/SM_Panel"), TEXT("SM_Panel"), MakePanelGeometry(), { FName(TEXT("Top")), FName(TEXT("Side")) });
	}

	void FGltfTestFixture::TearDownTestSuite()
	{
		delete Session;
		delete Project;
		Session = nullptr;
		Project = nullptr;
	}

	void FGltfTestFixture::Build(const std::string& Request)
	{
		ASSERT_EQ(Session->Run("local r = nanite_assembly_build" + Request + "\nassert(r.ok, r.error)"), "");
	}

	std::string FGltfTestFixture::OutputFile(const std::string& Name)
	{
		return ToUtf8(Project->GetDir()) + "/Exports/" + Name;
	}

	UStaticMesh& FGltfTestFixture::Mesh(const TCHAR* ObjectPath)
	{
		UStaticMesh* Found = LoadObject<UStaticMesh>(nullptr, ObjectPath);
		EXPECT_NE(Found, nullptr) << ToUtf8(ObjectPath);
		return *Found;
	}

	tinygltf::Model FGltfTestFixture::Export(const TCHAR* ObjectPath, const std::string& Name, bool bInstancing)
	{
		UE::Headless::FGltfExportOptions Options;
		Options.bInstancing = bInstancing;
		UE::Headless::FGltfExportSummary Summary;
		FString Error;
		const std::string File = OutputFile(Name);
		EXPECT_TRUE(UE::Headless::ExportStaticMeshAsGltf(Mesh(ObjectPath), FromUtf8(File), Options, Summary, Error)) << ToUtf8(Error);
		EXPECT_EQ(Summary.NumBytes, (int64)std::filesystem::file_size(File));
		ExpectValid(File);
		return Load(File);
	}

	std::vector<FReadbackNode> FGltfTestFixture::Readback(const std::string& Path)
	{
		const std::string Text = Session->Eval("(function() local t = {} for _, n in ipairs(nanite_assembly_info('" + Path
			+ "').nodes) do t[#t + 1] = string.format('%d %.9g %.9g %.9g %.9g %.9g %.9g %.9g %.9g %.9g', n.part, n.location.x, n.location.y,"
			  " n.location.z, n.rotation.pitch, n.rotation.yaw, n.rotation.roll, n.scale.x, n.scale.y, n.scale.z) end return table.concat(t, '\\n') end)()");
		std::vector<FReadbackNode> Nodes;
		std::istringstream Lines(Text);
		FReadbackNode Node;
		while (Lines >> Node.Part >> Node.Location.X >> Node.Location.Y >> Node.Location.Z >> Node.Rotation.Pitch >> Node.Rotation.Yaw >> Node.Rotation.Roll
			>> Node.Scale.X >> Node.Scale.Y >> Node.Scale.Z)
		{
			Nodes.push_back(Node);
		}
		EXPECT_FALSE(Nodes.empty()) << Text;
		return Nodes;
	}

	void FGltfTestFixture::ExpectInstancesOfReadback(const std::vector<std::vector<FInstance>>& InstancesOfParts, const std::vector<FReadbackNode>& Nodes)
	{
		std::vector<size_t> Next(InstancesOfParts.size(), 0);
		for (size_t Index = 0; Index < Nodes.size(); ++Index)
		{
			const FReadbackNode& Node = Nodes[Index];
			ASSERT_LE((size_t)Node.Part, InstancesOfParts.size());
			const std::vector<FInstance>& Instances = InstancesOfParts[Node.Part - 1];
			ASSERT_LT(Next[Node.Part - 1], Instances.size());
			const FInstance& Instance = Instances[Next[Node.Part - 1]++];
			EXPECT_TRUE(UE::Headless::FromYUpPoint(Instance.Translation).Equals(Node.Location, 1e-3f)) << "node " << Index + 1;
			EXPECT_TRUE(SameRotation(UE::Headless::SwapYUpRotation(Instance.Rotation), Node.Rotation.Quaternion())) << "node " << Index + 1;
			EXPECT_TRUE(UE::Headless::SwapYUpAxes(Instance.Scale).Equals(Node.Scale, 1e-5f)) << "node " << Index + 1;
		}
		for (size_t Part = 0; Part < Next.size(); ++Part)
		{
			EXPECT_EQ(Next[Part], InstancesOfParts[Part].size()) << "part " << Part + 1;
		}
	}
}
