// Static meshes: asynchronous builds, render data, the Nanite and assembly queries, and the plugin list.
#include "PlatformTestUtils.h"
#include "TestProject.h"

#include "Engine/StaticMesh.h"
#include "StaticMeshResources.h"
#include "HAL/IConsoleManager.h"
#include "Headless/EditorRuntime.h"
#include "Headless/Environment.h"
#include "Headless/Plugins.h"
#include "Headless/StaticMeshGeometry.h"
#include "Interfaces/IPluginManager.h"
#include "RenderUtils.h"
#include "Serialization/MemoryWriter.h"
#include "StaticMeshCompiler.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using PlatformTest::Utf8;

namespace
{
	UStaticMesh* MakeMesh(const TCHAR* PackageName, const TCHAR* AssetName)
	{
		return NewObject<UStaticMesh>(CreatePackage(PackageName), FName(AssetName), RF_Public | RF_Standalone);
	}

	void AddAssembly(UStaticMesh& Mesh, int32 Parts, int32 Nodes)
	{
		FNaniteAssemblyData& Data = Mesh.GetNaniteSettings().NaniteAssemblyData;
		Data = FNaniteAssemblyData();
		for (int32 Index = 0; Index < Parts; ++Index)
		{
			Data.Parts.AddDefaulted_GetRef().MeshObjectPath = FSoftObjectPath(FString(TEXT("/Engine/BasicShapes/Cube.Cube")));
		}
		for (int32 Index = 0; Index < Nodes; ++Index)
		{
			Data.Nodes.AddDefaulted_GetRef().PartIndex = 0;
		}
	}

	bool RebuildHasNaniteData(UStaticMesh& Mesh)
	{
		Mesh.Build();
		return Mesh.HasValidNaniteData();
	}
}

TEST(StaticMesh, BuildsAreQueuedAndFinishedOnDemand)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	FStaticMeshCompilingManager& Compiler = FStaticMeshCompilingManager::Get();
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Build/Box"), TEXT("Box"));
	EXPECT_EQ(Mesh->GetRenderData(), nullptr);
	EXPECT_FALSE(Mesh->IsCompiling());

	// Without source models the build ends with no render data.
	Mesh->Build();
	EXPECT_TRUE(Mesh->IsCompiling());
	EXPECT_EQ(Compiler.GetNumRemainingMeshes(), 1);
	EXPECT_EQ(Mesh->GetRenderData(), nullptr);
	EXPECT_FALSE(Mesh->IsCompiling());
	EXPECT_EQ(Compiler.GetNumRemainingMeshes(), 0);

	UE::Headless::GetMeshGeometry(*Mesh) = UE::Headless::MakeBasicShapeGeometry(UE::Headless::EBasicShape::Cube, FName(TEXT("Slot")));
	Mesh->Build();
	Mesh->Build();
	EXPECT_EQ(Compiler.GetNumRemainingMeshes(), 1);
	// Waiting for another mesh leaves this one pending.
	UStaticMesh* Other = MakeMesh(TEXT("/Game/Build/Other"), TEXT("Other"));
	Compiler.FinishCompilation(MakeArrayView(&Other, 1));
	EXPECT_TRUE(Mesh->IsCompiling());
	Compiler.FinishCompilation(MakeArrayView(&Mesh, 1));
	EXPECT_FALSE(Mesh->IsCompiling());

	const FStaticMeshRenderData* Data = Mesh->GetRenderData();
	ASSERT_NE(Data, nullptr);
	ASSERT_EQ(Data->LODResources.Num(), 1);
	ASSERT_EQ(Data->LODResources[0].Sections.Num(), 1);
	EXPECT_EQ(Data->LODResources[0].Sections[0].NumTriangles, 12u);
	EXPECT_FALSE(Mesh->HasValidNaniteData());

	// Finishing the edit rebuilds, asynchronously; an editor tick completes it.
	Mesh->GetNaniteSettings().bEnabled = true;
	Mesh->PostEditChange();
	EXPECT_TRUE(Mesh->IsCompiling());
	UE::Headless::TickEditor();
	EXPECT_FALSE(Mesh->IsCompiling());
	EXPECT_TRUE(Mesh->HasValidNaniteData());

	// A build that reports errors runs at once.
	TArray<FText> Errors;
	Mesh->SetNumSourceModels(0);
	Mesh->Build(false, &Errors);
	EXPECT_FALSE(Mesh->IsCompiling());
	EXPECT_EQ(Mesh->GetRenderData(), nullptr);
	EXPECT_EQ(Mesh->GetNumSourceModels(), 0);

	Mesh->Build();
	Other->Build();
	Compiler.FinishAllCompilation();
	EXPECT_FALSE(Mesh->IsCompiling() || Other->IsCompiling());
}

// A build in flight holds every property: an accessor of a locked one finishes the build first, while the
// Nanite settings, the assembly query and the compiling query never wait.
TEST(StaticMesh, ABuildInFlightHoldsEveryPropertyButTheNaniteSettings)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Build/Locked"), TEXT("Locked"));
	UE::Headless::GetMeshGeometry(*Mesh) = UE::Headless::MakeBasicShapeGeometry(UE::Headless::EBasicShape::Cube, FName(TEXT("Slot")));
	AddAssembly(*Mesh, 1, 2);
	Mesh->GetNaniteSettings().bEnabled = true;

	const auto StartBuild = [Mesh]()
	{
		Mesh->Build();
		EXPECT_TRUE(Mesh->IsCompiling());
		EXPECT_TRUE(Mesh->IsNaniteAssembly());
		EXPECT_TRUE(Mesh->IsNaniteEnabled());
		EXPECT_EQ(Mesh->GetNaniteSettings().NaniteAssemblyData.Nodes.Num(), 2);
		EXPECT_TRUE(Mesh->IsCompiling()) << "reading the Nanite settings does not wait";
	};

	StartBuild();
	EXPECT_EQ(Mesh->GetStaticMaterials().Num(), 0);
	EXPECT_FALSE(Mesh->IsCompiling()) << "the material list waits";
	EXPECT_NE(Mesh->GetRenderData(), nullptr);

	StartBuild();
	EXPECT_EQ(Mesh->GetMaterial(0), nullptr);
	EXPECT_FALSE(Mesh->IsCompiling()) << "a material looks at the material list";

	StartBuild();
	EXPECT_EQ(Mesh->GetNumSourceModels(), 1);
	EXPECT_FALSE(Mesh->IsCompiling()) << "the source models wait";

	StartBuild();
	EXPECT_TRUE(Mesh->HasValidNaniteData());
	EXPECT_FALSE(Mesh->IsCompiling()) << "the render data waits";

	// Recording the mesh (a transaction, a save) serialises it as built.
	StartBuild();
	TArray<uint8> Bytes;
	FMemoryWriter Writer(Bytes);
	Mesh->Serialize(Writer);
	EXPECT_FALSE(Mesh->IsCompiling()) << "serialising waits";
}

TEST(StaticMesh, AssemblyQueriesFollowTheSettingsAndConsoleVariables)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Nanite/Assembly"), TEXT("Assembly"));
	UE::Headless::FStaticMeshGeometry& Geometry = UE::Headless::GetMeshGeometry(*Mesh);
	Geometry.NumSourceModels = 1;
	Geometry.bHasMeshDescription = true;
	for (int32 Corner = 0; Corner < 3; ++Corner)
	{
		Geometry.Positions.Add(FVector3f(0.0f, 0.0f, 0.0f));
	}
	Geometry.Triangles.Add(UE::Headless::FMeshTriangle{ { 0, 1, 2 }, 0 });
	Geometry.PolygonGroupSlotNames.Add(FName(TEXT("Slot")));
	EXPECT_EQ(Geometry.CountRealTriangles(), 0);

	// Both parts and nodes are needed, and Nanite must be on.
	Mesh->GetNaniteSettings().bEnabled = true;
	AddAssembly(*Mesh, 1, 0);
	EXPECT_FALSE(Mesh->IsNaniteAssembly());
	AddAssembly(*Mesh, 0, 1);
	EXPECT_FALSE(Mesh->IsNaniteAssembly());
	AddAssembly(*Mesh, 1, 2);
	EXPECT_TRUE(Mesh->IsNaniteAssembly());
	Mesh->GetNaniteSettings().bEnabled = false;
	EXPECT_FALSE(Mesh->IsNaniteEnabled());
	EXPECT_FALSE(Mesh->IsNaniteAssembly());
	EXPECT_FALSE(RebuildHasNaniteData(*Mesh));
	Mesh->GetNaniteSettings().bEnabled = true;

	// The project enables assemblies; without them only real triangles give Nanite data.
	EXPECT_TRUE(NaniteAssembliesSupported());
	EXPECT_TRUE(RebuildHasNaniteData(*Mesh));
	EXPECT_EQ(UE::Headless::FRenderDataAccess::GetNumAssemblyNodes(*Mesh->GetRenderData()), 2);
	UE::Headless::SetConsoleVariable(TEXT("r.Nanite.AllowAssemblies"), TEXT("0"));
	EXPECT_FALSE(NaniteAssembliesSupported());
	EXPECT_TRUE(Mesh->HasValidNaniteData());
	EXPECT_FALSE(RebuildHasNaniteData(*Mesh));
	EXPECT_TRUE(Mesh->IsNaniteAssembly());
	UE::Headless::SetConsoleVariable(TEXT("r.Nanite.Foliage"), TEXT("1"));
	EXPECT_TRUE(NaniteAssembliesSupported());
	EXPECT_TRUE(RebuildHasNaniteData(*Mesh));
	UE::Headless::SetConsoleVariable(TEXT("r.Nanite.Foliage"), TEXT("0"));
	UE::Headless::GetMeshGeometry(*Mesh) = UE::Headless::MakeBasicShapeGeometry(UE::Headless::EBasicShape::Plane, FName(TEXT("Slot")));
	EXPECT_TRUE(RebuildHasNaniteData(*Mesh));
	EXPECT_EQ(Mesh->GetRenderData()->NaniteResourcesPtr->NumInputTriangles, 2u);
	EXPECT_EQ(UE::Headless::FRenderDataAccess::GetNumAssemblyNodes(*Mesh->GetRenderData()), 0);

	// Forcing Nanite on counts as enabled for every mesh.
	Mesh->GetNaniteSettings().bEnabled = false;
	UE::Headless::SetConsoleVariable(TEXT("r.Nanite.ForceEnableMeshes"), TEXT("1"));
	EXPECT_TRUE(Mesh->IsNaniteForceEnabled());
	EXPECT_TRUE(Mesh->IsNaniteEnabled());
	EXPECT_TRUE(Mesh->IsNaniteAssembly());
	UE::Headless::ResetConsoleVariables();
	EXPECT_FALSE(Mesh->IsNaniteEnabled());
}

TEST(Plugins, EnabledPluginsFollowTheProject)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	IPluginManager& Manager = IPluginManager::Get();
	const TSharedPtr<IPlugin> Builder = Manager.FindEnabledPlugin(TEXT("NaniteAssemblyEditorUtils"));
	ASSERT_TRUE(Builder.IsValid());
	EXPECT_EQ(Utf8(Builder->GetFriendlyName()), "Nanite Assembly Editor Utilities");
	EXPECT_TRUE(Manager.FindEnabledPlugin("naniteassemblyeditorutils").IsValid());
	EXPECT_FALSE(Manager.FindPlugin(TEXT("NoSuchPlugin")).IsValid());

	UE::Headless::SetPluginEnabled(TEXT("NaniteAssemblyEditorUtils"), false);
	EXPECT_FALSE(Manager.FindEnabledPlugin(TEXT("NaniteAssemblyEditorUtils")).IsValid());
	ASSERT_TRUE(Manager.FindPlugin(TEXT("NaniteAssemblyEditorUtils")).IsValid());
	EXPECT_FALSE(Manager.FindPlugin(TEXT("NaniteAssemblyEditorUtils"))->IsEnabled());

	// A project that lists no plugins gets the defaults: the experimental builder is off.
	Project.WriteFile("Other/Other.uproject", "{ \"FileVersion\": 3 }");
	UE::Headless::SetPluginEnabled(TEXT("NaniteAssemblyEditorUtils"), true);
	FString Error;
	EXPECT_TRUE(UE::Headless::LoadProjectPlugins(Project.GetDir() + TEXT("/Other/Other.uproject"), Error));
	EXPECT_FALSE(Manager.FindEnabledPlugin(TEXT("NaniteAssemblyEditorUtils")).IsValid());
	EXPECT_TRUE(Manager.FindEnabledPlugin(TEXT("CorvaneAI")).IsValid());
	EXPECT_FALSE(UE::Headless::LoadProjectPlugins(Project.GetDir() + TEXT("/Other/Missing.uproject"), Error));
	UE::Headless::SetPluginEnabled(TEXT("NaniteAssemblyEditorUtils"), true);
}
