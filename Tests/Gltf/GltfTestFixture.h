// The fixture of the glTF tests: one project with a running editor and a host session for a suite, the panel (a
// two-slot test mesh) saved in it, and the steps the tests share: build an assembly, export it into the project's
// Exports folder through the validator, read the file back, and compare its instances with the readback.
#pragma once

#include "GltfTestUtils.h"
#include "TestProject.h"

#include "Headless/StaticMeshGeometry.h"
#include "Math/Rotator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

class UStaticMesh;

namespace GltfTest
{
	inline constexpr const TCHAR* PanelPath = TEXT("/Game/Test/SM_Panel.SM_Panel");

	// A node of the readback, as nanite_assembly_info gives it.
	struct FReadbackNode
	{
		int Part = 0;
		FVector3f Location;
		FRotator3f Rotation;
		FVector3f Scale;
	};

	// The panel: a quad facing engine +Z in slot "Top", a quad facing engine -X in slot "Side" and a triangle without
	// area, each vertex with its own normal and texture coordinates, at places whose every coordinate differs.
	UE::Headless::FStaticMeshGeometry MakePanelGeometry();

	// A saved, built static mesh with the geometry given and one slot per name, each with BasicShapeMaterial.
	UStaticMesh* MakeMesh(const TCHAR* PackageName, const TCHAR* Name, const UE::Headless::FStaticMeshGeometry& Geometry, const TArray<FName>& Slots);

	const tinygltf::Node& RootNode(const tinygltf::Model& Model, size_t Index);

	class FGltfTestFixture : public testing::Test
	{
	protected:
		static void SetUpTestSuite();
		static void TearDownTestSuite();

		// Runs nanite_assembly_build with the request given as a Lua table constructor; the build must succeed.
		static void Build(const std::string& Request);
		static std::string OutputFile(const std::string& Name);
		static UStaticMesh& Mesh(const TCHAR* ObjectPath);

		// Exports the mesh into the project's Exports folder, has the validator check the file, and reads it back.
		static tinygltf::Model Export(const TCHAR* ObjectPath, const std::string& Name, bool bInstancing = true);

		static std::vector<FReadbackNode> Readback(const std::string& Path);

		// Every instance in the file stands where the readback puts its node, the file's transforms converted back
		// to the engine's frame; the file lists a part's instances in the order of the nodes.
		static void ExpectInstancesOfReadback(const std::vector<std::vector<FInstance>>& InstancesOfParts, const std::vector<FReadbackNode>& Nodes);

		static inline FTestProject* Project = nullptr;
		static inline FTestSession* Session = nullptr;
	};
}
