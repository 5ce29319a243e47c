// The package file format: values that come back bit for bit, tables inline or in the binary section, files of
// version 1, and damaged files refused with their place named.
#include "PackageFileTestUtils.h"

#include "Headless/EngineLog.h"
#include "Headless/PackageLoadFaults.h"
#include "Headless/StaticMeshGeometry.h"
#include "Misc/PackageName.h"

#include <gtest/gtest.h>
#include <xxhash.h>

#include <bit>
#include <cstring>

using namespace PackageFileTest;
using PlatformTest::Utf8;

namespace
{
	// Every kind of float a mesh can hold: zeros of both signs, denormals, the extremes, infinities, NaNs with and
	// without payloads, signalling and negative ones, and values with no short decimal text.
	constexpr uint32 SpecialFloatBits[] = { 0x00000000, 0x80000000, 0x00000001, 0x807fffff, 0x00800000, 0x7f7fffff, 0xff7fffff, 0x7f800000,
		0xff800000, 0x7fc00000, 0xffc00000, 0x7f800001, 0x7fc12345, 0xffffffff, 0x3eaaaaab, 0x3dcccccd, 0x4b800001, 0xc69c4000 };
	constexpr int32 NumSpecialFloats = (int32)(sizeof(SpecialFloatBits) / sizeof(SpecialFloatBits[0]));

	float Special(int32 Index)
	{
		return std::bit_cast<float>(SpecialFloatBits[Index % NumSpecialFloats]);
	}

	constexpr int32 ExtremeInts[] = { MIN_int32, MAX_int32, -1, 0, 7 };

	// A mesh whose every float and integer is at an edge, with NumRecords nodes and positions.
	UStaticMesh* MakeMeshOfEdges(const TCHAR* PackageName, int32 NumRecords)
	{
		UStaticMesh* Mesh = MakeMesh(PackageName, *FPackageName::GetShortName(PackageName));
		TArray<FStaticMaterial> Materials;
		Materials.Add(FStaticMaterial(nullptr, FName(TEXT("Slot")), FName(TEXT("Slot"))));
		for (int32 Lane = 0; Lane < 4; ++Lane)
		{
			Materials[0].UVChannelData.LocalUVDensities[Lane] = Special(Lane + 9);
		}
		Mesh->SetStaticMaterials(Materials);

		FMeshNaniteSettings Settings;
		Settings.bEnabled = true;
		Settings.PositionPrecision = MIN_int32;
		Settings.NumRays = MAX_int32;
		Settings.TargetMinimumResidencyInKB = MAX_uint32;
		Settings.KeepPercentTriangles = Special(12);
		Settings.TrimRelativeError = Special(1);
		Settings.RayBackUp = Special(2);
		Settings.DisplacementMaps.Add(FMeshDisplacementMap{ Special(10), Special(11) });
		FNaniteAssemblyPart& Part = Settings.NaniteAssemblyData.Parts.AddDefaulted_GetRef();
		Part.MeshObjectPath = FSoftObjectPath(FString(TEXT("/Engine/BasicShapes/Cube.Cube")));
		Part.MaterialRemap = { MIN_int32, MAX_int32, -1 };
		for (int32 Index = 0; Index < NumRecords; ++Index)
		{
			FNaniteAssemblyNode& Node = Settings.NaniteAssemblyData.Nodes.AddDefaulted_GetRef();
			Node.PartIndex = ExtremeInts[Index % 5];
			Node.TransformSpace = Index % 2 ? ENaniteAssemblyNodeTransformSpace::BoneRelative : ENaniteAssemblyNodeTransformSpace::Local;
			const int32 First = Index * 10;
			Node.Transform.SetRotation(FQuat4f(Special(First), Special(First + 1), Special(First + 2), Special(First + 3)));
			Node.Transform.SetTranslation(FVector3f(Special(First + 4), Special(First + 5), Special(First + 6)));
			Node.Transform.SetScale3D(FVector3f(Special(First + 7), Special(First + 8), Special(First + 9)));
		}
		Settings.NaniteAssemblyData.Nodes[1].BoneInfluences = { { MIN_int32, Special(11) }, { MAX_int32, Special(1) } };
		Settings.NaniteAssemblyData.Nodes.Last().BoneInfluences = { { 3, Special(3) } };
		Mesh->SetNaniteSettings(Settings);

		UE::Headless::FStaticMeshGeometry& Geometry = UE::Headless::GetMeshGeometry(*Mesh);
		Geometry = UE::Headless::MakeBasicShapeGeometry(UE::Headless::EBasicShape::Cube, FName(TEXT("Slot")));
		Geometry.NumSourceModels = 3;
		// The records under test are the positions; normals and UVs would have to follow their count.
		Geometry.Positions.Reset();
		Geometry.Normals.Reset();
		Geometry.UVs.Reset();
		for (int32 Index = 0; Index < NumRecords; ++Index)
		{
			Geometry.Positions.Add(FVector3f(Special(Index * 3), Special(Index * 3 + 1), Special(Index * 3 + 2)));
		}
		Geometry.Triangles[0].PolygonGroup = MIN_int32;
		Geometry.Triangles[1].PolygonGroup = MAX_int32;
		Geometry.SectionMaterialIndices = { MAX_int32 };
		return Mesh;
	}

	// A version 2 file of one static mesh with the given properties, as this build writes it when nothing is large.
	std::string MeshFile(const std::string& Properties)
	{
		return "{\n\t\"format\": \"cvai-headless-package\",\n\t\"version\": 2,\n\t\"package\": \"/Game/Bad/SM_Bad\",\n\t\"objects\": [\n\t\t"
			   "{\"name\":\"SM_Bad\",\"class\":\"StaticMesh\",\"outer\":\"\",\"flags\":[\"RF_Public\",\"RF_Standalone\"],\"properties\":"
			+ Properties + "}\n\t]\n}\n";
	}

	std::string AssemblyProperties(const std::string& Remap, const std::string& Nodes, const std::string& SourceModels = "1")
	{
		return "{\"static_materials\":[],\"nanite\":{\"enabled\":true,\"assembly\":{\"parts\":[{\"mesh\":\"/Engine/BasicShapes/Cube.Cube\",\"material_remap\":["
			+ Remap + "]}],\"nodes\":[" + Nodes + "],\"bone_influences\":[]}},\"source_models\":" + SourceModels + "}";
	}

	const std::string GoodNode = "[0,0,0,0,0,1,0,0,0,1,1,1]";

	void ReplaceFirst(std::string& Text, const std::string& From, const std::string& To)
	{
		const size_t At = Text.find(From);
		ASSERT_NE(At, std::string::npos) << From;
		Text.replace(At, From.size(), To);
	}

	// The bytes of a binary section with its checksum made to match again.
	void Rehash(std::string& File)
	{
		const size_t Start = File.find('\0') + 1;
		const size_t Size = File.size() - Start - sizeof(XXH64_hash_t);
		const XXH64_hash_t Hash = XXH3_64bits(File.data() + Start, Size);
		std::memcpy(File.data() + Start + Size, &Hash, sizeof(Hash));
	}
}

TEST(PackageFileFormat, EveryValueComesBackBitForBitInlineOrInTheBinarySection)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	// 1024 records stay in the text; one more and the nodes and positions go to the binary section, each
	// 48 bytes a node and 12 a position.
	for (const int32 NumRecords : { 24, 1024, 1025 })
	{
		const FString PackageName = FString::Printf(TEXT("/Game/Edges/SM_Edges%d"), NumRecords);
		UStaticMesh* Mesh = MakeMeshOfEdges(*PackageName, NumRecords);
		const TArray<uint8> Saved = StateOf(*Mesh);
		float SavedDensities[4];
		std::memcpy(SavedDensities, Mesh->GetStaticMaterials()[0].UVChannelData.LocalUVDensities, sizeof(SavedDensities));
		ASSERT_TRUE(Save({ Mesh->GetPackage() }, false));
		FString Filename;
		ASSERT_TRUE(FPackageName::DoesPackageExist(PackageName, &Filename));
		const std::string File = ReadText(Filename);
		if (NumRecords <= 1024)
		{
			EXPECT_EQ(File.find('\0'), std::string::npos);
			EXPECT_NE(File.find("\"nodes\":[[-2147483648,0,0,-0.0,1e-45,"), std::string::npos);
			EXPECT_NE(File.find("\"keep_percent_triangles\":\"nan:0x7fc12345\""), std::string::npos);
		}
		else
		{
			EXPECT_NE(File.find("\"nodes\":{\"offset\":0,\"count\":1025}"), std::string::npos);
			EXPECT_NE(File.find("\"positions\":{\"offset\":49200,\"count\":1025}"), std::string::npos);
			const size_t TextEnd = File.find('\0');
			ASSERT_NE(TextEnd, std::string::npos);
			const std::string Tail = "\n\t],\n\t\"binary_size\": 61500\n}\n";
			EXPECT_EQ(File.substr(TextEnd - Tail.size(), Tail.size()), Tail);
			EXPECT_EQ(File.size(), TextEnd + 1 + 61500 + 8);
		}

		Project.Stop();
		ASSERT_TRUE(Project.Start());
		UStaticMesh* Loaded = LoadObject<UStaticMesh>(nullptr, *(PackageName + TEXT(".") + FPackageName::GetShortName(PackageName)));
		ASSERT_NE(Loaded, nullptr) << NumRecords;
		EXPECT_TRUE(StateOf(*Loaded) == Saved) << NumRecords;
		EXPECT_EQ(std::memcmp(Loaded->GetStaticMaterials()[0].UVChannelData.LocalUVDensities, SavedDensities, sizeof(SavedDensities)), 0);
		EXPECT_EQ(Loaded->GetNaniteSettings().NaniteAssemblyData.Nodes.Num(), NumRecords);
	}
}

TEST(PackageFileFormat, Version1FilesAreStillReadAndSavedAsVersion2)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	Project.WriteFile("Content/Old/SM_Old.uasset.json",
		"{\n\t\"format\": \"cvai-headless-package\",\n\t\"version\": 1,\n\t\"package\": \"/Game/Old/SM_Old\",\n\t\"objects\": [\n\t\t"
		"{\"name\":\"SM_Old\",\"class\":\"StaticMesh\",\"outer\":\"\",\"flags\":[\"RF_Public\",\"RF_Standalone\"],\"properties\":{\"nanite\":"
		"{\"assembly\":{\"nodes\":[[0,0,0,0,0,1,1.5,\"inf\",\"nan\",1,1,1],[0,1,0,0,0,1,0,0,-0.0,2,2,2,[[3,0.25],[7,0.75]]]],\"parts\":"
		"[{\"material_remap\":[0],\"mesh\":\"/Engine/BasicShapes/Cube.Cube\"}]},\"enabled\":true},\"source_models\":1,\"static_materials\":[]}}\n\t]\n}\n");
	UStaticMesh* Mesh = LoadObject<UStaticMesh>(nullptr, TEXT("/Game/Old/SM_Old.SM_Old"));
	ASSERT_NE(Mesh, nullptr);
	const TArray<FNaniteAssemblyNode>& Nodes = Mesh->GetNaniteSettings().NaniteAssemblyData.Nodes;
	ASSERT_EQ(Nodes.Num(), 2);
	const FVector3f Translation = Nodes[0].Transform.GetTranslation();
	EXPECT_EQ(std::bit_cast<uint32>(Translation.X), 0x3fc00000u);
	EXPECT_EQ(std::bit_cast<uint32>(Translation.Y), 0x7f800000u);
	EXPECT_EQ(std::bit_cast<uint32>(Translation.Z), 0x7fc00000u);
	EXPECT_EQ(std::bit_cast<uint32>(Nodes[1].Transform.GetTranslation().Z), 0x80000000u);
	EXPECT_EQ(Nodes[1].TransformSpace, ENaniteAssemblyNodeTransformSpace::BoneRelative);
	EXPECT_TRUE(Nodes[1].BoneInfluences == TArray<FNaniteAssemblyBoneInfluence>({ { 3, 0.25f }, { 7, 0.75f } }));
	EXPECT_TRUE(Nodes[0].BoneInfluences.IsEmpty());

	Mesh->MarkPackageDirty();
	ASSERT_TRUE(Save({ Mesh->GetPackage() }, true));
	const std::string File = ReadText(ContentFile(Project, TEXT("Old/SM_Old.uasset.json")));
	const std::string Header = "{\n\t\"format\": \"cvai-headless-package\",\n\t\"version\": 2,\n";
	EXPECT_EQ(File.substr(0, Header.size()), Header);
	EXPECT_NE(File.find("\"nodes\":[[0,0,0,0,0,1,1.5,\"inf\",\"nan\",1,1,1],[0,1,0,0,0,1,0,0,-0.0,2,2,2]],\"bone_influences\":[[1,3,0.25],[1,7,0.75]]"),
		std::string::npos);
}

TEST(PackageFileFormat, ADamagedFileIsRefusedWithTheReasonAndCreatesNothing)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	// A file whose 1025 nodes are in the binary section (1 + 49200 + 8 bytes after the text).
	UStaticMesh* Large = MakeMesh(TEXT("/Game/Bad/SM_Bad"), TEXT("SM_Bad"));
	Large->GetNaniteSettings().NaniteAssemblyData.Nodes.SetNum(1025);
	ASSERT_TRUE(Save({ Large->GetPackage() }, false));
	const FString Filename = ContentFile(Project, TEXT("Bad/SM_Bad.uasset.json"));
	const std::string Binary = ReadText(Filename);
	const size_t TextEnd = Binary.find('\0');
	ASSERT_NE(TextEnd, std::string::npos);
	Project.Stop();
	ASSERT_TRUE(Project.Start());

	std::string Flipped = Binary;
	Flipped[TextEnd + 1 + 100] ^= 0x10;
	std::string SpaceOutOfRange = Binary;
	SpaceOutOfRange[TextEnd + 1 + 5 * 48 + 4] = 2;
	Rehash(SpaceOutOfRange);
	std::string Overlong = Binary;
	ReplaceFirst(Overlong, "\"count\":1025", "\"count\":2000");
	std::string NegativeCount = Binary;
	ReplaceFirst(NegativeCount, "\"count\":1025", "\"count\":-5");
	std::string Newer = MeshFile(AssemblyProperties("0", GoodNode));
	ReplaceFirst(Newer, "\"version\": 2", "\"version\": 3");
	std::string UnknownClass = MeshFile(AssemblyProperties("0", GoodNode));
	ReplaceFirst(UnknownClass, "StaticMesh", "Bogus");
	const std::string Nodes = "objects[0].properties.nanite.assembly.nodes";
	const struct
	{
		std::string Text;
		std::string Reason;
	} Cases[] = {
		{ "", "it is empty" },
		{ "  \n", "it holds no JSON text" },
		{ Binary.substr(0, TextEnd / 2), "its JSON text is damaged: A string is opened, but never closed." },
		{ Binary.substr(0, Binary.size() - 10), "its binary section is truncated: 49209 bytes should follow its JSON text, 49199 do" },
		{ Binary.substr(0, TextEnd + 1), "its binary section is truncated: 49209 bytes should follow its JSON text, 1 do" },
		{ Flipped, "its binary section does not match its checksum" },
		{ Binary + "xyz", "it has 3 bytes after its binary section" },
		{ MeshFile(AssemblyProperties("0", GoodNode)) + std::string(1, '\0') + "junk", "it has bytes after its JSON text" },
		{ Newer, "it was written by a newer format version 3; this build reads up to 2" },
		{ UnknownClass, "objects[0] has the unknown class 'Bogus'" },
		{ SpaceOutOfRange, Nodes + "[5][1] is out of range: 2 is not from 0 to 1" },
		{ Overlong, Nodes + " does not fit in the binary section: 2000 records of 48 bytes from byte 0, in a section of 49200 bytes" },
		{ NegativeCount, Nodes + ".count is out of range: -5 is not from 0 to 2147483647" },
		{ MeshFile(AssemblyProperties("0", "[1099511627776,0,0,0,0,1,0,0,0,1,1,1]")),
			Nodes + "[0][0] is out of range: 1099511627776 is not from -2147483648 to 2147483647" },
		{ MeshFile(AssemblyProperties("0", "[18446744073709551615,0,0,0,0,1,0,0,0,1,1,1]")),
			Nodes + "[0][0] is out of range: 18446744073709551615 is not from -2147483648 to 2147483647" },
		{ MeshFile(AssemblyProperties("1000000000000", GoodNode)),
			"objects[0].properties.nanite.assembly.parts[0].material_remap[0] is out of range: 1000000000000 is not from -2147483648 to 2147483647" },
		{ MeshFile(AssemblyProperties("0", GoodNode, "-1")), "objects[0].properties.source_models is out of range: -1 is not from 0 to 2147483647" },
		{ MeshFile(AssemblyProperties("0", "[0,7,0,0,0,1,0,0,0,1,1,1]")), Nodes + "[0][1] is out of range: 7 is not from 0 to 1" },
		{ MeshFile(AssemblyProperties("0", "[0,0,0,0,0,1,0,0,0,1,1]")), Nodes + "[0] has 11 values instead of 12" },
		{ MeshFile(AssemblyProperties("0", GoodNode + ",[0,0,0,0,0,1,0,0,0,1,1,1,1]")), Nodes + "[1] has 13 values instead of 12" },
		{ MeshFile(AssemblyProperties("0", "[0.5,0,0,0,0,1,0,0,0,1,1,1]")), Nodes + "[0][0] is not a whole number" },
		{ MeshFile(AssemblyProperties("0", "[0,0,\"one\",0,0,1,0,0,0,1,1,1]")), Nodes + "[0][2] is not a number: 'one'" },
		{ MeshFile(AssemblyProperties("0", "[0,0,1e39,0,0,1,0,0,0,1,1,1]")), Nodes + "[0][2] is out of range: 1e+39 is too large for a float" },
		{ MeshFile("{\"static_materials\":[],\"nanite\":{\"enabled\":true}}"), "objects[0].properties.nanite.assembly is missing" },
	};
	for (const auto& Case : Cases)
	{
		WriteText(Filename, Case.Text);
		UE::Headless::ClearEngineLog();
		const std::string Message = "'" + Utf8(Filename) + "' is not a valid package file: " + Case.Reason;
		EXPECT_EQ(LoadPackage(nullptr, TEXT("/Game/Bad/SM_Bad"), LOAD_None), nullptr) << Case.Reason;
		EXPECT_EQ(PlatformTest::LogOf(TEXT("LogLinker")), std::vector<std::string>({ "Error: Failed to load package '/Game/Bad/SM_Bad': " + Message }));
		EXPECT_EQ(Utf8(UE::Headless::GetPackageLoadFault(TEXT("/game/bad/sm_bad"))), Message);
		EXPECT_EQ(StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/Game/Bad/SM_Bad.SM_Bad")), nullptr) << Case.Reason;
	}

	// A good file clears the fault.
	WriteText(Filename, Binary);
	ASSERT_NE(LoadPackage(nullptr, TEXT("/Game/Bad/SM_Bad"), LOAD_None), nullptr);
	EXPECT_EQ(Utf8(UE::Headless::GetPackageLoadFault(TEXT("/Game/Bad/SM_Bad"))), "");
}
