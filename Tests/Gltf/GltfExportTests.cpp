// glTF export, read back with tinygltf's loader after the Khronos validator passed the file: instances where the
// readback puts the nodes, in glTF's frame and not mirrored; part geometry with its front faces, normals and
// texture coordinates; the assembly's materials after each part's remap; the refusals, whole.
#include "GltfTestFixture.h"

#include "Engine/StaticMesh.h"
#include "Headless/GltfExport.h"
#include "Headless/StringUtils.h"
#include "Headless/YUpFrame.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

using namespace GltfTest;
using UE::Headless::FromUtf8;
using UE::Headless::ToUtf8;

namespace
{
	class GltfExportTest : public FGltfTestFixture
	{
	protected:
		// The error of an export that must fail, after checking that it left no file behind.
		static std::string ExportError(const UStaticMesh& Mesh, const std::string& Name)
		{
			UE::Headless::FGltfExportSummary Summary;
			FString Error;
			const std::string File = OutputFile(Name);
			EXPECT_FALSE(UE::Headless::ExportStaticMeshAsGltf(Mesh, FromUtf8(File), UE::Headless::FGltfExportOptions(), Summary, Error));
			EXPECT_FALSE(std::filesystem::exists(File));
			return ToUtf8(Error);
		}
	};

	std::vector<std::string> MaterialNames(const tinygltf::Model& Model)
	{
		std::vector<std::string> Names;
		for (const tinygltf::Material& Material : Model.materials)
		{
			Names.push_back(Material.name);
		}
		return Names;
	}

	// The material name of each primitive of a mesh, with the number of its triangles.
	std::map<std::string, size_t> TrianglesByMaterial(const tinygltf::Model& Model, const tinygltf::Mesh& Mesh)
	{
		std::map<std::string, size_t> Triangles;
		for (const tinygltf::Primitive& Primitive : Mesh.primitives)
		{
			EXPECT_EQ(Primitive.mode, TINYGLTF_MODE_TRIANGLES);
			Triangles[Primitive.material < 0 ? "(none)" : Model.materials.at(Primitive.material).name] += Model.accessors.at(Primitive.indices).count / 3;
		}
		return Triangles;
	}
}

TEST_F(GltfExportTest, FenceExampleHasOneInstancedNodePerPartWhereTheReadbackPutsItsNodes)
{
	ASSERT_EQ(Session->Run("dofile('" CVAI_EXAMPLES_DIR "/FenceAssembly.lua')"), "");
	const tinygltf::Model Model = Export(TEXT("/Game/Examples/SM_Fence.SM_Fence"), "fence.glb");

	EXPECT_EQ(Model.asset.version, "2.0");
	EXPECT_EQ(Model.asset.generator, "cvai export (CVAI Nanite Assembly headless editor)");
	// Viewers without the extension still load the file, and show each part once.
	EXPECT_EQ(Model.extensionsUsed, std::vector<std::string>({ "EXT_mesh_gpu_instancing" }));
	EXPECT_TRUE(Model.extensionsRequired.empty());
	ASSERT_EQ(Model.scenes.at(Model.defaultScene).nodes.size(), 2u);
	ASSERT_EQ(Model.meshes.size(), 2u);
	EXPECT_EQ(RootNode(Model, 0).name, "/Engine/BasicShapes/Cylinder.Cylinder");
	EXPECT_EQ(Model.meshes.at(RootNode(Model, 0).mesh).name, "/Engine/BasicShapes/Cylinder.Cylinder");
	EXPECT_EQ(Model.meshes.at(RootNode(Model, 1).mesh).name, "/Engine/BasicShapes/Cube.Cube");
	EXPECT_EQ(MaterialNames(Model), std::vector<std::string>({ "BasicShapeMaterial" }));
	EXPECT_EQ(Model.materials.at(0).extras.Get("material").Get<std::string>(), "/Engine/BasicShapes/BasicShapeMaterial.BasicShapeMaterial");

	const std::vector<std::vector<FInstance>> Instances = { ReadInstances(Model, RootNode(Model, 0)), ReadInstances(Model, RootNode(Model, 1)) };
	EXPECT_EQ(Instances[0].size(), 6u);
	EXPECT_EQ(Instances[1].size(), 10u);
	ExpectInstancesOfReadback(Instances, Readback("/Game/Examples/SM_Fence"));
}

TEST_F(GltfExportTest, EngineAxesBecomeGltfAxesWithoutMirroring)
{
	Build(R"({ output = "/Game/Frame/SM_Axes", parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = {
		{ location = { x = 0 } }, { location = { x = 200 } }, { location = { x = 400 } },
		{ location = { y = 300 } }, { location = { z = 150 } },
		{ rotation = { yaw = 90 } }, { rotation = { pitch = 90 } }, { scale = { x = 1, y = 2, z = 3 } } } } } })");
	const tinygltf::Model Model = Export(TEXT("/Game/Frame/SM_Axes.SM_Axes"), "axes.glb");
	const std::vector<FInstance> Instances = ReadInstances(Model, RootNode(Model, 0));
	ASSERT_EQ(Instances.size(), 8u);

	// A row along the engine's +X is a row along glTF's +X, in metres.
	EXPECT_TRUE(Instances[0].Translation.Equals(FVector3f(0, 0, 0)));
	EXPECT_TRUE(Instances[1].Translation.Equals(FVector3f(2, 0, 0)));
	EXPECT_TRUE(Instances[2].Translation.Equals(FVector3f(4, 0, 0)));
	// Right of forward stays right of forward: the engine's +Y is glTF's +Z, and up is up.
	EXPECT_TRUE(Instances[3].Translation.Equals(FVector3f(0, 0, 3)));
	EXPECT_TRUE(Instances[4].Translation.Equals(FVector3f(0, 1.5f, 0)));
	// A yaw turns forward towards the right (engine +X to +Y), which is glTF's +X to +Z; a pitch raises it.
	EXPECT_TRUE(Instances[5].Rotation.RotateVector(FVector3f(1, 0, 0)).Equals(FVector3f(0, 0, 1), 1e-5f));
	EXPECT_TRUE(Instances[6].Rotation.RotateVector(FVector3f(1, 0, 0)).Equals(FVector3f(0, 1, 0), 1e-5f));
	EXPECT_TRUE(Instances[7].Scale.Equals(FVector3f(1, 3, 2)));
}

TEST_F(GltfExportTest, PartGeometryKeepsItsVerticesFrontFacesNormalsAndTextureCoordinates)
{
	Build(R"({ output = "/Game/Geometry/SM_OnePanel", parts = { { mesh = "/Game/Test/SM_Panel", material_merge = "slot_names", transforms = { {} } } } })");
	const tinygltf::Model Model = Export(TEXT("/Game/Geometry/SM_OnePanel.SM_OnePanel"), "panel.glb");
	const UE::Headless::FStaticMeshGeometry& Source = UE::Headless::GetMeshGeometry(Mesh(PanelPath));
	ASSERT_EQ(Model.meshes.size(), 1u);
	const tinygltf::Mesh& Panel = Model.meshes[0];
	ASSERT_EQ(Panel.primitives.size(), 2u);

	const std::map<std::string, int>& Attributes = Panel.primitives[0].attributes;
	EXPECT_EQ(Panel.primitives[1].attributes, Attributes);
	const std::vector<std::vector<float>> Positions = ReadFloats(Model, Attributes.at("POSITION"));
	const std::vector<std::vector<float>> Normals = ReadFloats(Model, Attributes.at("NORMAL"));
	const std::vector<std::vector<float>> UVs = ReadFloats(Model, Attributes.at("TEXCOORD_0"));
	ASSERT_EQ(Positions.size(), (size_t)Source.Positions.Num());
	ASSERT_EQ(Normals.size(), Positions.size());
	ASSERT_EQ(UVs.size(), Positions.size());
	for (int32 Vertex = 0; Vertex < Source.Positions.Num(); ++Vertex)
	{
		EXPECT_EQ(ToVector(Positions[Vertex]), UE::Headless::ToYUpPoint(Source.Positions[Vertex])) << "vertex " << Vertex;
		EXPECT_EQ(ToVector(Normals[Vertex]), UE::Headless::SwapYUpAxes(Source.Normals[Vertex])) << "vertex " << Vertex;
		EXPECT_EQ(UVs[Vertex], std::vector<float>({ Source.UVs[Vertex].X, Source.UVs[Vertex].Y })) << "vertex " << Vertex;
	}
	const tinygltf::Accessor& PositionAccessor = Model.accessors.at(Attributes.at("POSITION"));
	EXPECT_EQ(PositionAccessor.minValues, std::vector<double>({ 0.0, 0.0, 0.0 }));
	const FVector3f Max = UE::Headless::ToYUpPoint(FVector3f(80, 50, 30));
	EXPECT_EQ(PositionAccessor.maxValues, std::vector<double>({ Max.X, Max.Y, Max.Z }));

	// The triangles of each slot in their order, corners kept, the one without area left out.
	EXPECT_EQ(ReadIndices(Model, Panel.primitives[0].indices), std::vector<uint32_t>({ 0, 1, 2, 1, 3, 2 }));
	EXPECT_EQ(ReadIndices(Model, Panel.primitives[1].indices), std::vector<uint32_t>({ 4, 5, 6, 5, 7, 6 }));
	// glTF's front faces are counter-clockwise: each triangle faces where its vertices' normals point.
	for (const tinygltf::Primitive& Primitive : Panel.primitives)
	{
		const std::vector<uint32_t> Indices = ReadIndices(Model, Primitive.indices);
		for (size_t First = 0; First + 2 < Indices.size(); First += 3)
		{
			const FVector3f A = ToVector(Positions[Indices[First]]);
			const FVector3f B = ToVector(Positions[Indices[First + 1]]);
			const FVector3f C = ToVector(Positions[Indices[First + 2]]);
			const FVector3f Facing = ((B - A) ^ (C - A)).GetSafeNormal();
			EXPECT_GT(Facing | ToVector(Normals[Indices[First]]), 0.99f) << "triangle at " << First;
		}
	}
}

TEST_F(GltfExportTest, PrimitivesDrawWithTheAssemblyMaterialsThatThePartsRemapTo)
{
	// Assembly slots: BasicShapeMaterial (the cube's), then Top and Side (the panel merged by slot name, remap
	// [1, 2]); the panel merged by identical material maps both its slots to the first (remap [0, 0]).
	Build(R"({ output = "/Game/Materials/SM_Mixed", parts = {
		{ mesh = "/Engine/BasicShapes/Cube", transforms = { {} } },
		{ mesh = "/Game/Test/SM_Panel", material_merge = "slot_names", transforms = { {}, { location = { x = 100 } } } },
		{ mesh = "/Game/Test/SM_Panel", transforms = { { location = { y = 100 } } } } } })");
	const tinygltf::Model Model = Export(TEXT("/Game/Materials/SM_Mixed.SM_Mixed"), "mixed.gltf");

	EXPECT_EQ(MaterialNames(Model), std::vector<std::string>({ "BasicShapeMaterial", "Top", "Side" }));
	ASSERT_EQ(Model.meshes.size(), 3u);
	EXPECT_EQ(TrianglesByMaterial(Model, Model.meshes[0]), (std::map<std::string, size_t>{ { "BasicShapeMaterial", 12 } }));
	EXPECT_EQ(TrianglesByMaterial(Model, Model.meshes[1]), (std::map<std::string, size_t>{ { "Top", 2 }, { "Side", 2 } }));
	EXPECT_EQ(TrianglesByMaterial(Model, Model.meshes[2]), (std::map<std::string, size_t>{ { "BasicShapeMaterial", 4 } }));
	// Each slot has its own colour.
	EXPECT_NE(Model.materials[1].pbrMetallicRoughness.baseColorFactor, Model.materials[2].pbrMetallicRoughness.baseColorFactor);
	EXPECT_NE(Model.materials[0].pbrMetallicRoughness.baseColorFactor, Model.materials[1].pbrMetallicRoughness.baseColorFactor);
	// The embedded buffer makes the .gltf one file.
	EXPECT_EQ(Model.buffers.at(0).uri.rfind("data:application/octet-stream;base64,", 0), 0u);

	ExpectInstancesOfReadback({ ReadInstances(Model, RootNode(Model, 0)), ReadInstances(Model, RootNode(Model, 1)), ReadInstances(Model, RootNode(Model, 2)) },
		Readback("/Game/Materials/SM_Mixed"));
}

TEST_F(GltfExportTest, AnEmptyRemapKeepsThePartSlotsAndASlotPastTheAssemblysHasNoMaterial)
{
	Build(R"({ output = "/Game/Materials/SM_Remaps", parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = { {} } },
		{ mesh = "/Game/Test/SM_Panel", material_merge = "slot_names", transforms = { {} } } } })");
	UStaticMesh& Assembly = Mesh(TEXT("/Game/Materials/SM_Remaps.SM_Remaps"));
	TArray<FNaniteAssemblyPart>& Parts = Assembly.GetNaniteSettings().NaniteAssemblyData.Parts;
	Parts[1].MaterialRemap.Reset();
	tinygltf::Model Model = Export(TEXT("/Game/Materials/SM_Remaps.SM_Remaps"), "remap-empty.glb");
	EXPECT_EQ(TrianglesByMaterial(Model, Model.meshes.at(1)), (std::map<std::string, size_t>{ { "BasicShapeMaterial", 2 }, { "Top", 2 } }));

	Parts[1].MaterialRemap = { 2, 3 };
	Model = Export(TEXT("/Game/Materials/SM_Remaps.SM_Remaps"), "remap-past.glb");
	EXPECT_EQ(TrianglesByMaterial(Model, Model.meshes.at(1)), (std::map<std::string, size_t>{ { "Side", 2 }, { "(none)", 2 } }));
	Parts[1].MaterialRemap = { 1 };
	Model = Export(TEXT("/Game/Materials/SM_Remaps.SM_Remaps"), "remap-short.glb");
	EXPECT_EQ(TrianglesByMaterial(Model, Model.meshes.at(1)), (std::map<std::string, size_t>{ { "Top", 2 }, { "(none)", 2 } }));
}

TEST_F(GltfExportTest, NodesAreWrittenAsStoredWhateverTheirSpaceAndNodesOfNoPartAreLeftOut)
{
	Build(R"({ output = "/Game/Nodes/SM_Stored", parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = {
		{ location = { x = 100 } }, { location = { x = 200 } }, { location = { x = 300 } }, { location = { x = 400 } } } } } })");
	TArray<FNaniteAssemblyNode>& Nodes = Mesh(TEXT("/Game/Nodes/SM_Stored.SM_Stored")).GetNaniteSettings().NaniteAssemblyData.Nodes;
	Nodes[0].TransformSpace = ENaniteAssemblyNodeTransformSpace::BoneRelative;
	Nodes[1].Transform.SetRotation(FQuat4f(0.0f, 0.0f, 2.0f, 2.0f));
	Nodes[2].PartIndex = 7;
	Nodes[3].PartIndex = -1;
	UE::Headless::FGltfExportSummary Summary;
	FString Error;
	const std::string File = OutputFile("stored.glb");
	ASSERT_TRUE(UE::Headless::ExportStaticMeshAsGltf(Mesh(TEXT("/Game/Nodes/SM_Stored.SM_Stored")), FromUtf8(File), UE::Headless::FGltfExportOptions(),
		Summary, Error));
	EXPECT_EQ(Summary.NumInstances, 2);
	EXPECT_EQ(Summary.NumMeshes, 1);
	EXPECT_EQ(Summary.NumMaterials, 1);
	ExpectValid(File);
	const tinygltf::Model Model = Load(File);
	const std::vector<FInstance> Instances = ReadInstances(Model, RootNode(Model, 0));
	ASSERT_EQ(Instances.size(), 2u);
	EXPECT_EQ(Instances[0].Translation, UE::Headless::ToYUpPoint(FVector3f(100, 0, 0)));
	EXPECT_EQ(Instances[1].Translation, UE::Headless::ToYUpPoint(FVector3f(200, 0, 0)));
	// A quaternion a little (or here much) off unit length is written as the rotation it stands for.
	const float Half = std::sqrt(0.5f);
	EXPECT_TRUE(SameRotation(Instances[1].Rotation, UE::Headless::SwapYUpRotation(FQuat4f(0.0f, 0.0f, Half, Half)), 1e-6f));
	EXPECT_NEAR(Instances[1].Rotation.SizeSquared(), 1.0f, 1e-6f);
}

TEST_F(GltfExportTest, AnAssemblysOwnTrianglesAreOneMoreMesh)
{
	MakeMesh(TEXT("/Game/Base/SM_Base"), TEXT("SM_Base"), MakePanelGeometry(), { FName(TEXT("Top")), FName(TEXT("Side")) });
	Build(R"({ output = "/Game/Base/SM_Base", overwrite = true, parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = { {}, {} } } } })");
	const tinygltf::Model Model = Export(TEXT("/Game/Base/SM_Base.SM_Base"), "base.glb");
	ASSERT_EQ(Model.scenes.at(0).nodes.size(), 2u);
	EXPECT_EQ(RootNode(Model, 0).name, "/Game/Base/SM_Base.SM_Base");
	EXPECT_TRUE(RootNode(Model, 0).extensions.empty());
	const tinygltf::Mesh& Base = Model.meshes.at(RootNode(Model, 0).mesh);
	size_t Triangles = 0;
	for (const std::pair<const std::string, size_t>& Entry : TrianglesByMaterial(Model, Base))
	{
		Triangles += Entry.second;
	}
	EXPECT_EQ(Triangles, 4u);
	EXPECT_EQ(ReadInstances(Model, RootNode(Model, 1)).size(), 2u);
}

TEST_F(GltfExportTest, APlainStaticMeshIsOneMeshOnOneNode)
{
	const tinygltf::Model Model = Export(PanelPath, "panel-alone.glb");
	EXPECT_TRUE(Model.extensionsUsed.empty());
	ASSERT_EQ(Model.scenes.at(0).nodes.size(), 1u);
	ASSERT_EQ(Model.nodes.size(), 1u);
	EXPECT_EQ(Model.nodes[0].mesh, 0);
	EXPECT_EQ(Model.nodes[0].name, "/Game/Test/SM_Panel.SM_Panel");
	EXPECT_TRUE(Model.nodes[0].translation.empty() && Model.nodes[0].rotation.empty() && Model.nodes[0].scale.empty());
	EXPECT_EQ(MaterialNames(Model), std::vector<std::string>({ "Top", "Side" }));
	ASSERT_EQ(Model.meshes.size(), 1u);
	EXPECT_EQ(TrianglesByMaterial(Model, Model.meshes[0]), (std::map<std::string, size_t>{ { "Top", 2 }, { "Side", 2 } }));
}

TEST_F(GltfExportTest, SectionsChooseTheSlotsAndVerticesWithoutAUsableNormalGetNone)
{
	// Sections swapped: the Top group draws with slot 1, the Side group with slot 0.
	UE::Headless::FStaticMeshGeometry Swapped = MakePanelGeometry();
	Swapped.SectionMaterialIndices = { 1, 0 };
	Swapped.Normals[5] = FVector3f(0.0f);
	MakeMesh(TEXT("/Game/Sections/SM_Swapped"), TEXT("SM_Swapped"), Swapped, { FName(TEXT("First")), FName(TEXT("Second")) });
	tinygltf::Model Model = Export(TEXT("/Game/Sections/SM_Swapped.SM_Swapped"), "swapped.glb");
	ASSERT_EQ(Model.meshes.size(), 1u);
	ASSERT_EQ(Model.meshes[0].primitives.size(), 2u);
	for (const tinygltf::Primitive& Primitive : Model.meshes[0].primitives)
	{
		EXPECT_EQ(Model.materials.at(Primitive.material).name, ReadIndices(Model, Primitive.indices).at(0) == 0 ? "Second" : "First");
		EXPECT_EQ(Primitive.attributes.count("NORMAL"), 0u);
		EXPECT_EQ(Primitive.attributes.count("TEXCOORD_0"), 1u);
	}

	// A group without a section draws with the slot of its own number; a mesh with neither normals nor UVs has
	// positions alone.
	UE::Headless::FStaticMeshGeometry Bare = MakePanelGeometry();
	Bare.SectionMaterialIndices = { 1 };
	Bare.Normals.Reset();
	Bare.UVs.Pop();
	MakeMesh(TEXT("/Game/Sections/SM_Bare"), TEXT("SM_Bare"), Bare, { FName(TEXT("First")), FName(TEXT("Second")) });
	Model = Export(TEXT("/Game/Sections/SM_Bare.SM_Bare"), "bare.glb");
	ASSERT_EQ(Model.meshes.size(), 1u);
	EXPECT_EQ(TrianglesByMaterial(Model, Model.meshes[0]), (std::map<std::string, size_t>{ { "Second", 4 } }));
	EXPECT_EQ(Model.meshes[0].primitives.at(0).attributes, (std::map<std::string, int>{ { "POSITION", Model.meshes[0].primitives.at(0).attributes.at("POSITION") } }));
}

TEST_F(GltfExportTest, RefusesWhatCannotBeExportedAndLeavesNoFile)
{
	UStaticMesh* Unbuilt = NewObject<UStaticMesh>(GetTransientPackage(), FName(TEXT("SM_Unbuilt")), RF_NoFlags);
	EXPECT_EQ(ExportError(*Unbuilt, "unbuilt.glb"), "'/Engine/Transient.SM_Unbuilt' has not been built");

	UE::Headless::FStaticMeshGeometry Flat = MakePanelGeometry();
	for (UE::Headless::FMeshTriangle& Triangle : Flat.Triangles)
	{
		Triangle.VertexIndices[1] = Triangle.VertexIndices[0];
	}
	UStaticMesh* Empty = MakeMesh(TEXT("/Game/Refusals/SM_Flat"), TEXT("SM_Flat"), Flat, { FName(TEXT("Top")), FName(TEXT("Side")) });
	EXPECT_EQ(ExportError(*Empty, "flat.glb"), "'/Game/Refusals/SM_Flat.SM_Flat' has no triangles");
	EXPECT_EQ(ExportError(Mesh(PanelPath), "panel.obj"), "'" + OutputFile("panel.obj") + "' is neither a .glb nor a .gltf file");

	// Assemblies whose parts cannot be exported, each part named.
	Build(R"({ output = "/Game/Refusals/SM_Parts", parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = { {} } },
		{ mesh = "/Game/Test/SM_Panel", transforms = { {} } } } })");
	UStaticMesh& Assembly = Mesh(TEXT("/Game/Refusals/SM_Parts.SM_Parts"));
	FNaniteAssemblyPart& Second = Assembly.GetNaniteSettings().NaniteAssemblyData.Parts[1];
	Second.MeshObjectPath = FSoftObjectPath(TEXT("/Game/Missing/SM_Gone.SM_Gone"));
	EXPECT_EQ(ExportError(Assembly, "gone.glb"), "part 2: its mesh '/Game/Missing/SM_Gone.SM_Gone' cannot be loaded");
	Project->WriteFile("Content/Broken/SM_Empty.uasset.json", "");
	Second.MeshObjectPath = FSoftObjectPath(TEXT("/Game/Broken/SM_Empty.SM_Empty"));
	EXPECT_EQ(ExportError(Assembly, "broken.glb"), "part 2: its mesh '/Game/Broken/SM_Empty.SM_Empty' cannot be loaded: '" + ToUtf8(Project->GetDir())
			+ "/Content/Broken/SM_Empty.uasset.json' is not a valid package file: it is empty");
	Second.MeshObjectPath = FSoftObjectPath(Empty);
	EXPECT_EQ(ExportError(Assembly, "flat-part.glb"), "part 2: its mesh '/Game/Refusals/SM_Flat.SM_Flat' has no triangles");
	Second.MeshObjectPath = FSoftObjectPath(Unbuilt);
	EXPECT_EQ(ExportError(Assembly, "unbuilt-part.glb"), "part 2: its mesh '/Engine/Transient.SM_Unbuilt' has not been built");
}
