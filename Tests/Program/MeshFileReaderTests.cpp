// Model files read into a mesh in the engine's frame: units, axes, handedness, baked node transforms, normals,
// UVs and slots, on small files written for these tests and on real ones that nobody here wrote (the
// assimp-testmodels package), and the refusals with their whole texts.
#include "Headless/MeshFileReader.h"
#include "Headless/StringUtils.h"
#include "MeshChecks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>
#include <string>
#include <vector>

using UE::Headless::FStaticMeshGeometry;

namespace
{
	const std::string DataDir = TEST_DATA_DIR "/Import/";
	const std::string ModelsDir = ASSIMP_MODELS_DIR "/";

	std::string Utf8(const FString& Text)
	{
		return UE::Headless::ToUtf8(Text);
	}

	std::string SlotNames(const FStaticMeshGeometry& Geometry)
	{
		std::string Names;
		for (const FName& Name : Geometry.PolygonGroupSlotNames)
		{
			Names += (Names.empty() ? "" : ",") + Utf8(Name.ToString());
		}
		return Names;
	}

	// Reads the file, failing the test with the reader's message when it refuses.
	FStaticMeshGeometry Read(const std::string& Path)
	{
		FStaticMeshGeometry Geometry;
		FString Error;
		EXPECT_TRUE(UE::Headless::ReadMeshFile(UE::Headless::FromUtf8(Path), Geometry, Error)) << Utf8(Error);
		return Geometry;
	}

	// Sound, and every front (clockwise) facing the way its corners' normals do.
	::testing::AssertionResult IsSoundAndFacingItsNormals(const FStaticMeshGeometry& Geometry)
	{
		const std::string Fault = MeshChecks::FindFault(Geometry);
		const int32 FacingAway = MeshChecks::CountCornersFacingAway(Geometry);
		if (Fault.empty() && FacingAway == 0)
		{
			return ::testing::AssertionSuccess();
		}
		return ::testing::AssertionFailure() << (Fault.empty() ? "" : Fault + "; ") << FacingAway << " corners facing away from their triangle";
	}

	std::string Refusal(const std::string& Path)
	{
		FStaticMeshGeometry Geometry;
		FString Error;
		EXPECT_FALSE(UE::Headless::ReadMeshFile(UE::Headless::FromUtf8(Path), Geometry, Error)) << Path;
		EXPECT_TRUE(Geometry.Positions.IsEmpty() && Geometry.Triangles.IsEmpty()) << Path;
		return Utf8(Error);
	}

	::testing::AssertionResult Near(const FVector3f& Actual, const FVector3f& Expected, float Tolerance = 1e-4f)
	{
		if (Actual.Equals(Expected, Tolerance))
		{
			return ::testing::AssertionSuccess();
		}
		return ::testing::AssertionFailure() << "(" << Actual.X << ", " << Actual.Y << ", " << Actual.Z << ") instead of (" << Expected.X << ", "
											 << Expected.Y << ", " << Expected.Z << ")";
	}

	const FVector3f& Corner(const FStaticMeshGeometry& Geometry, int32 Triangle, int32 Index)
	{
		return Geometry.Positions[Geometry.Triangles[Triangle].VertexIndices[Index]];
	}

	const FVector3f& CornerNormal(const FStaticMeshGeometry& Geometry, int32 Triangle, int32 Index)
	{
		return Geometry.Normals[Geometry.Triangles[Triangle].VertexIndices[Index]];
	}

	// A temporary folder of files written by a test.
	class FScratch
	{
	public:
		FScratch()
			: Dir(std::filesystem::temp_directory_path() / ("MeshFileReaderTests-" + std::to_string(::getpid())))
		{
			std::filesystem::create_directories(Dir);
		}
		~FScratch()
		{
			std::error_code Error;
			std::filesystem::remove_all(Dir, Error);
		}

		std::string Write(const std::string& Name, const std::string& Text) const
		{
			const std::string Path = (Dir / Name).string();
			std::ofstream(Path, std::ios::binary) << Text;
			return Path;
		}

		std::filesystem::path Dir;
	};
}

// Nodes.gltf holds one triangle at (1, 2, 3), (2, 2, 3), (1, 3, 3) metres, facing glTF's +Z, drawn by four nodes: as
// it is, turned 90 degrees about +Y and moved 5 m back, mirrored in X, and scaled by 2 under a parent 10 m up.
TEST(MeshFileReader, GltfMetresBecomeCentimetresInTheEngineFrameWithEveryNodeBakedIn)
{
	const FStaticMeshGeometry Geometry = Read(DataDir + "Nodes.gltf");
	EXPECT_TRUE(IsSoundAndFacingItsNormals(Geometry));
	// The unnamed material is named after its slot; triangles come slot by slot, each slot in node order.
	EXPECT_EQ(SlotNames(Geometry), "Metal,Material_1");
	EXPECT_TRUE(Geometry.SectionMaterialIndices == TArray<int32>({ 0, 1 }));
	EXPECT_TRUE(Geometry.NumSourceModels == 1 && Geometry.bHasMeshDescription);
	ASSERT_EQ(Geometry.Triangles.Num(), 4);
	EXPECT_EQ(Geometry.Positions.Num(), 12);
	const int32 Groups[] = { 0, 0, 1, 1 };
	for (int32 Triangle = 0; Triangle < 4; ++Triangle)
	{
		EXPECT_EQ(Geometry.Triangles[Triangle].PolygonGroup, Groups[Triangle]) << Triangle;
	}

	// glTF's (x, y, z) metres are the engine's (x, z, y) centimetres, exactly; the front stays the front, the
	// texture as the file has it.
	EXPECT_TRUE(Corner(Geometry, 0, 0) == FVector3f(100.0f, 300.0f, 200.0f));
	EXPECT_TRUE(Corner(Geometry, 0, 1) == FVector3f(200.0f, 300.0f, 200.0f));
	EXPECT_TRUE(Corner(Geometry, 0, 2) == FVector3f(100.0f, 300.0f, 300.0f));
	EXPECT_TRUE(CornerNormal(Geometry, 0, 0) == FVector3f(0.0f, 1.0f, 0.0f));
	const int32* Plain = Geometry.Triangles[0].VertexIndices;
	EXPECT_TRUE(Geometry.UVs[Plain[0]] == FVector2f(0.25f, 0.125f) && Geometry.UVs[Plain[1]] == FVector2f(0.75f, 0.125f)
		&& Geometry.UVs[Plain[2]] == FVector2f(0.25f, 0.875f));

	// Mirrored: the corners change their order so that the front still faces the way the normals do.
	EXPECT_TRUE(Corner(Geometry, 1, 0) == FVector3f(-100.0f, 300.0f, 200.0f));
	EXPECT_TRUE(Corner(Geometry, 1, 1) == FVector3f(-100.0f, 300.0f, 300.0f));
	EXPECT_TRUE(Corner(Geometry, 1, 2) == FVector3f(-200.0f, 300.0f, 200.0f));
	EXPECT_TRUE(Near(CornerNormal(Geometry, 1, 0), FVector3f(0.0f, 1.0f, 0.0f)));

	// Turned: (1, 2, 3) goes to (3, 2, -1), then back to (3, 2, -6); its normal turns from +Z to +X.
	EXPECT_TRUE(Near(Corner(Geometry, 2, 0), FVector3f(300.0f, -600.0f, 200.0f)));
	EXPECT_TRUE(Near(Corner(Geometry, 2, 1), FVector3f(300.0f, -700.0f, 200.0f)));
	EXPECT_TRUE(Near(CornerNormal(Geometry, 2, 0), FVector3f(1.0f, 0.0f, 0.0f)));

	// The child's scale applies before its parent's move: (2, 4, 6), then 10 m up to (2, 14, 6).
	EXPECT_TRUE(Near(Corner(Geometry, 3, 0), FVector3f(200.0f, 600.0f, 1400.0f)));
	EXPECT_TRUE(Near(Corner(Geometry, 3, 2), FVector3f(200.0f, 600.0f, 1600.0f)));
	EXPECT_TRUE(Near(CornerNormal(Geometry, 3, 0), FVector3f(0.0f, 1.0f, 0.0f)));
}

// TwoMaterialBox.obj: a box from (-1, 0, -3) to (1, 4, 3) in OBJ's Y-up frame, without normals, of two materials.
TEST(MeshFileReader, ObjUnitsAreCentimetresAndAFileWithoutNormalsGetsFlatOnes)
{
	const FStaticMeshGeometry Geometry = Read(DataDir + "TwoMaterialBox.obj");
	EXPECT_TRUE(IsSoundAndFacingItsNormals(Geometry));
	// The unused default material gets no slot; a space becomes '_'.
	EXPECT_EQ(SlotNames(Geometry), "Red,Blue_wall");
	EXPECT_EQ(Geometry.Triangles.Num(), 12);
	// Each face has its own four corners, the corners it shares with other faces split off by their normals.
	EXPECT_EQ(Geometry.Positions.Num(), 24);
	const MeshChecks::FBox Bounds = MeshChecks::GetBounds(Geometry);
	EXPECT_TRUE(Bounds.Min == FVector3f(-1.0f, -3.0f, 0.0f)) << Bounds.Min.X << " " << Bounds.Min.Y << " " << Bounds.Min.Z;
	EXPECT_TRUE(Bounds.Max == FVector3f(1.0f, 3.0f, 4.0f)) << Bounds.Max.X << " " << Bounds.Max.Y << " " << Bounds.Max.Z;
	// Closed with every front facing out: not mirrored, not inside out.
	EXPECT_NEAR(MeshChecks::GetEnclosedVolume(Geometry), 48.0, 1e-6);

	int32 Top = 0;
	for (int32 Index = 0; Index < Geometry.Triangles.Num(); ++Index)
	{
		const UE::Headless::FMeshTriangle& Triangle = Geometry.Triangles[Index];
		EXPECT_EQ(Triangle.PolygonGroup, Index < 4 ? 0 : 1) << Index;
		const FVector3f& Normal = Geometry.Normals[Triangle.VertexIndices[0]];
		EXPECT_FLOAT_EQ(std::abs(Normal.X) + std::abs(Normal.Y) + std::abs(Normal.Z), 1.0f) << Index;
		if (Normal == FVector3f(0.0f, 0.0f, 1.0f))
		{
			++Top;
			// OBJ's texture space starts at the bottom left: (0.25, 0.125) there is (0.25, 0.875) here.
			for (const int32 Vertex : Triangle.VertexIndices)
			{
				if (Geometry.Positions[Vertex] == FVector3f(-1.0f, -3.0f, 4.0f))
				{
					EXPECT_TRUE(Geometry.UVs[Vertex] == FVector2f(0.25f, 0.875f)) << Geometry.UVs[Vertex].X << " " << Geometry.UVs[Vertex].Y;
				}
			}
		}
	}
	EXPECT_EQ(Top, 2);
}

// ZUpInches.fbx: a Z-up file (front -Y) in inches; its triangle at (1, 2, 3), facing +Z, on a node 10 inches up.
TEST(MeshFileReader, FbxUsesTheAxesAndUnitTheFileDeclares)
{
	const FStaticMeshGeometry Geometry = Read(DataDir + "ZUpInches.fbx");
	EXPECT_TRUE(IsSoundAndFacingItsNormals(Geometry));
	EXPECT_EQ(SlotNames(Geometry), "Brass");
	ASSERT_EQ(Geometry.Triangles.Num(), 1);
	// Up stays up and the file's front (-Y) is the engine's -Y: (1, 2, 13) inches is (2.54, -5.08, 33.02) cm.
	EXPECT_TRUE(Near(Corner(Geometry, 0, 0), FVector3f(2.54f, -5.08f, 33.02f)));
	EXPECT_TRUE(Near(Corner(Geometry, 0, 1), FVector3f(5.08f, -5.08f, 33.02f)));
	EXPECT_TRUE(Near(Corner(Geometry, 0, 2), FVector3f(2.54f, -7.62f, 33.02f)));
	EXPECT_TRUE(Near(CornerNormal(Geometry, 0, 0), FVector3f(0.0f, 0.0f, 1.0f)));
}

// An FBX file whose axis settings do not name three different axes is taken as Y-up, and one without a usable
// unit as one in centimetres.
TEST(MeshFileReader, FbxWithoutUsableAxesOrUnitIsYUpInCentimetres)
{
	std::ifstream Source(DataDir + "ZUpInches.fbx");
	std::string Text(std::istreambuf_iterator<char>(Source), {});
	const auto Replace = [&Text](const std::string& From, const std::string& To)
	{
		const size_t At = Text.find(From);
		ASSERT_NE(At, std::string::npos) << From;
		Text.replace(At, From.size(), To);
	};
	Replace("\"CoordAxis\", \"int\", \"Integer\", \"\",0", "\"CoordAxis\", \"int\", \"Integer\", \"\",2");
	Replace("\"UnitScaleFactor\", \"double\", \"Number\", \"\",2.54", "\"UnitScaleFactor\", \"double\", \"Number\", \"\",-2");
	const FScratch Scratch;
	const FStaticMeshGeometry Geometry = Read(Scratch.Write("Unusable.fbx", Text));
	ASSERT_EQ(Geometry.Triangles.Num(), 1);
	// (1, 2, 13) read as glTF's axes, one centimetre a unit.
	EXPECT_TRUE(Near(Corner(Geometry, 0, 0), FVector3f(1.0f, 13.0f, 2.0f)));
	EXPECT_TRUE(IsSoundAndFacingItsNormals(Geometry));
}

// A normal that gives no direction is replaced by its triangle's.
TEST(MeshFileReader, AZeroNormalGivesWayToTheTrianglesOwn)
{
	const FScratch Scratch;
	const FStaticMeshGeometry Geometry = Read(Scratch.Write("ZeroNormal.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 0\nvn 0 0 1\nf 1//1 2//2 3//1\n"));
	ASSERT_EQ(Geometry.Positions.Num(), 3);
	for (const FVector3f& Normal : Geometry.Normals)
	{
		EXPECT_TRUE(Normal == FVector3f(0.0f, 1.0f, 0.0f)) << Normal.X << " " << Normal.Y << " " << Normal.Z;
	}
	EXPECT_TRUE(IsSoundAndFacingItsNormals(Geometry));
}

// Files from the assimp-testmodels package: counts, slots and bounds as the engine would show them, every front
// facing the way its normals do, and the closed boxes closed with their fronts outside.
TEST(MeshFileReader, RealModelFilesOfEachFormat)
{
	struct FCase
	{
		const char* Path;
		int32 Vertices;
		int32 Triangles;
		const char* Slots;
		FVector3f Min;
		FVector3f Max;
		bool bClosedBox;
		// Corners whose smooth normal, as the file has it, faces away from a thin triangle's front.
		int32 CornersFacingAway = 0;
	};
	const FCase Cases[] = {
		// A 1 m glTF box, as text and as binary.
		{ "glTF2/BoxTextured-glTF/BoxTextured.gltf", 24, 12, "Texture", { -50, -50, -50 }, { 50, 50, 50 }, true },
		{ "glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", 24, 12, "Texture", { -50, -50, -50 }, { 50, 50, 50 }, true },
		{ "OBJ/box.obj", 24, 12, "Default", { -0.5f, -0.5f, -0.5f }, { 0.5f, 0.5f, 0.5f }, true },
		{ "FBX/phong_cube.fbx", 24, 12, "phong1", { -0.5f, -0.5f, -0.5f }, { 0.5f, 0.5f, 0.5f }, true },
		// 3ds Max: Z up, metres, a 1.2 m box standing on the ground.
		{ "FBX/embedded_ascii/box.FBX", 24, 12, "03_-_Default", { -60, -60, 0 }, { 60, 60, 120 }, true },
		// Several nodes with their own transforms, of two materials.
		{ "FBX/cubes_with_names.fbx", 516, 420, "Mat_Green,Mat_Red", { -6.06712f, -6.04376f, -14.515f }, { 14.8656f, 26.7273f, 5.99829f }, false },
		{ "OBJ/spider.obj", 942, 1312, "Skin,HLeibTex,BeinTex,Augentex", { -92.6552f, -106.691f, -42.2338f }, { 57.9362f, 86.6912f, 37.504f }, false, 10 },
	};
	for (const FCase& Case : Cases)
	{
		const FStaticMeshGeometry Geometry = Read(ModelsDir + Case.Path);
		EXPECT_EQ(Geometry.Positions.Num(), Case.Vertices) << Case.Path;
		EXPECT_EQ(Geometry.Triangles.Num(), Case.Triangles) << Case.Path;
		EXPECT_EQ(SlotNames(Geometry), Case.Slots) << Case.Path;
		EXPECT_EQ(MeshChecks::FindFault(Geometry), "") << Case.Path;
		EXPECT_EQ(MeshChecks::CountCornersFacingAway(Geometry), Case.CornersFacingAway) << Case.Path;
		const MeshChecks::FBox Bounds = MeshChecks::GetBounds(Geometry);
		EXPECT_TRUE(Near(Bounds.Min, Case.Min, 1e-3f)) << Case.Path;
		EXPECT_TRUE(Near(Bounds.Max, Case.Max, 1e-3f)) << Case.Path;
		if (Case.bClosedBox)
		{
			const FVector3f Size = Case.Max - Case.Min;
			EXPECT_NEAR(MeshChecks::GetEnclosedVolume(Geometry), (double)Size.X * Size.Y * Size.Z, 1e-3 * Size.X * Size.Y * Size.Z) << Case.Path;
		}
	}
}

TEST(MeshFileReader, SlotNamesAreCleanedAndKeptApart)
{
	// One triangle per material, each material named as listed.
	const std::vector<std::string> Names = { "a b", "a.b", "", "A b", "x\\ty", "Ok_Name", std::string(1100, 'L') };
	std::string Materials;
	std::string Meshes;
	std::string Nodes;
	std::string NodeList;
	for (size_t Index = 0; Index < Names.size(); ++Index)
	{
		const std::string Separator = Index == 0 ? "" : ",";
		Materials += Separator + (Names[Index].empty() ? std::string("{}") : "{\"name\":\"" + Names[Index] + "\"}");
		Meshes += Separator + "{\"primitives\":[{\"attributes\":{\"POSITION\":0},\"material\":" + std::to_string(Index) + "}]}";
		Nodes += Separator + "{\"mesh\":" + std::to_string(Index) + "}";
		NodeList += Separator + std::to_string(Index);
	}
	// The triangle (0, 0, 0), (1, 0, 0), (0, 1, 0) as three floats each, in base64.
	const std::string Gltf = "{\"asset\":{\"version\":\"2.0\"},\"scene\":0,\"scenes\":[{\"nodes\":[" + NodeList + "]}],\"nodes\":[" + Nodes + "],\"meshes\":["
		+ Meshes + "],\"materials\":[" + Materials
		+ "],\"accessors\":[{\"bufferView\":0,\"componentType\":5126,\"count\":3,\"type\":\"VEC3\",\"min\":[0,0,0],\"max\":[1,1,0]}],"
		  "\"bufferViews\":[{\"buffer\":0,\"byteLength\":36}],\"buffers\":[{\"byteLength\":36,"
		  "\"uri\":\"data:application/octet-stream;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA\"}]}";
	const FScratch Scratch;
	const FStaticMeshGeometry Geometry = Read(Scratch.Write("Names.gltf", Gltf));
	// Names differ only in letter case count as the same, as the engine's names do.
	// A name longer than an FName holds is cut to the length it can.
	EXPECT_EQ(SlotNames(Geometry), "a_b,a_b_0,Material_2,A_b_1,x_y,Ok_Name," + std::string(1023, 'L'));
	// Without normals in the file, each triangle gets its own, facing its front.
	EXPECT_TRUE(IsSoundAndFacingItsNormals(Geometry));
	EXPECT_TRUE(Geometry.Normals[0] == FVector3f(0.0f, 1.0f, 0.0f));
	EXPECT_TRUE(Geometry.UVs[0] == FVector2f(0.0f, 0.0f));
}

TEST(MeshFileReader, AFileThatCannotBeImportedIsRefusedWithTheReason)
{
	const FScratch Scratch;
	const std::string Stl = Scratch.Write("Part.stl", "solid part\nendsolid part\n");
	EXPECT_EQ(Refusal(Stl), "cannot import '" + Stl + "': only .gltf, .glb, .obj and .fbx files can be imported");
	const std::string Missing = (Scratch.Dir / "Missing.glb").string();
	EXPECT_EQ(Refusal(Missing), "cannot import '" + Missing + "': no such file");
	const std::string Folder = (Scratch.Dir / "Folder.obj").string();
	std::filesystem::create_directory(Folder);
	EXPECT_EQ(Refusal(Folder), "cannot import '" + Folder + "': it is not a file");

	// What assimp says, whole.
	std::ifstream Box(ModelsDir + "glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", std::ios::binary);
	const std::string Truncated = Scratch.Write("Truncated.glb", std::string(std::istreambuf_iterator<char>(Box), {}).substr(0, 600));
	EXPECT_EQ(Refusal(Truncated), "cannot import '" + Truncated + "': No suitable reader found for the file format of file \"" + Truncated + "\".");
	EXPECT_EQ(Refusal(ModelsDir + "glTF2/MissingBin/BoxTextured.gltf"),
		"cannot import '" + ModelsDir + "glTF2/MissingBin/BoxTextured.gltf': GLTF: could not open referenced file \"BoxTextured0.bin\"");
	const std::string BadIndex = Scratch.Write("BadIndex.obj", "v 0 0 0\nv 1 0 0\nf 1 2 9\n");
	EXPECT_EQ(Refusal(BadIndex), "cannot import '" + BadIndex + "': OBJ: vertex index out of range");
	EXPECT_EQ(Refusal(ModelsDir + "invalid/empty.obj"), "cannot import '" + ModelsDir + "invalid/empty.obj': OBJ-file is too small.");
	EXPECT_EQ(Refusal(ModelsDir + "glTF2/RecursiveNodes/RecursiveNodes.gltf"),
		"cannot import '" + ModelsDir + "glTF2/RecursiveNodes/RecursiveNodes.gltf': GLTF: Object at index 0 in array \"nodes\" has recursive reference to itself");

	// Read, but nothing to make a mesh of.
	EXPECT_EQ(Refusal(ModelsDir + "OBJ/point_cloud.obj"), "cannot import '" + ModelsDir + "OBJ/point_cloud.obj': it holds no triangles");
	const std::string Lines = Scratch.Write("Lines.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nl 1 2 3\n");
	EXPECT_EQ(Refusal(Lines), "cannot import '" + Lines + "': it holds no triangles");
	const std::string Flat = Scratch.Write("Flat.obj", "v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\n");
	EXPECT_EQ(Refusal(Flat), "cannot import '" + Flat + "': it holds no triangles");
	EXPECT_EQ(Refusal(ModelsDir + "glTF2/BoxWithInfinites-glTF-Binary/BoxWithInfinites.glb"),
		"cannot import '" + ModelsDir + "glTF2/BoxWithInfinites-glTF-Binary/BoxWithInfinites.glb': a vertex position is not a finite number");
}
