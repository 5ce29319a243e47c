// Editor automation checks: build, refuse, save and undo assemblies in a running editor. They work under
// /Game/CorvaneAutomation and overwrite what an earlier run left there.
#include "Misc/AutomationTest.h"

#if WITH_DEV_AUTOMATION_TESTS

#include "Build/NaniteAssemblyBuild.h"
#include "Editor.h"
#include "Engine/StaticMesh.h"
#include "LuaSessionData.h"
#include "Misc/PackageName.h"
#include "Request/NaniteAssemblyBuildRequest.h"
#include "UObject/ObjectSaveContext.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	using namespace CVAI::NaniteAssembly;

	const TCHAR* const CubePath = TEXT("/Engine/BasicShapes/Cube");
	const TCHAR* const SpherePath = TEXT("/Engine/BasicShapes/Sphere");

	FNaniteAssemblyPartRequest MakePart(const TCHAR* MeshPath, TArray<FVector> Locations)
	{
		FNaniteAssemblyPartRequest Part;
		Part.MeshPath = MeshPath;
		for (const FVector& Location : Locations)
		{
			Part.Transforms.Add(FTransform(Location));
		}
		return Part;
	}

	FNaniteAssemblyBuildRequest MakeRequest(const TCHAR* Output)
	{
		FNaniteAssemblyBuildRequest Request;
		Request.Output = Output;
		Request.bOverwrite = true;
		return Request;
	}

	const FNaniteAssemblyData& AssemblyOf(const UStaticMesh& Mesh)
	{
		return Mesh.GetNaniteSettings().NaniteAssemblyData;
	}
}

IMPLEMENT_SIMPLE_AUTOMATION_TEST(FNaniteAssemblyBuildTest, "Corvane.GeometryScripting.NaniteAssemblyBuild",
	EAutomationTestFlags::EditorContext | EAutomationTestFlags::EngineFilter)

bool FNaniteAssemblyBuildTest::RunTest(const FString& Parameters)
{
	FNaniteAssemblyBuildRequest Request = MakeRequest(TEXT("/Game/CorvaneAutomation/SM_BuildCheck"));
	Request.Parts.Add(MakePart(CubePath, { FVector(0.0, 0.0, 0.0), FVector(100.0, 0.0, 0.0) }));
	Request.Parts.Add(MakePart(SpherePath, { FVector(0.0, 200.0, 0.0) }));

	FLuaSessionData Session;
	FNaniteAssemblyBuildOutcome Outcome;
	FString Error;
	// The message is made after the call that fills Error: both as arguments of one call would be unordered.
	const bool bBuilt = ExecuteNaniteAssemblyBuild(Request, Session, Outcome, Error);
	UTEST_TRUE(*FString::Printf(TEXT("the build succeeds (%s)"), *Error), bBuilt);
	UTEST_TRUE(TEXT("the outcome holds the mesh"), Outcome.Mesh != nullptr);

	const UStaticMesh& Mesh = *Outcome.Mesh;
	TestEqual(TEXT("object path"), Outcome.ObjectPath, FString(TEXT("/Game/CorvaneAutomation/SM_BuildCheck.SM_BuildCheck")));
	TestTrue(TEXT("Nanite is enabled"), Mesh.IsNaniteEnabled());
	TestTrue(TEXT("the mesh is an assembly"), Mesh.IsNaniteAssembly());
	TestTrue(TEXT("the mesh is transactional"), Mesh.HasAnyFlags(RF_Transactional));
	TestTrue(TEXT("the compile finished"), Outcome.bCompiled && !Mesh.IsCompiling());
	TestEqual(TEXT("parts"), AssemblyOf(Mesh).Parts.Num(), 2);
	TestEqual(TEXT("nodes"), AssemblyOf(Mesh).Nodes.Num(), 3);
	if (AssemblyOf(Mesh).Nodes.Num() == 3)
	{
		TestEqual(TEXT("node 2 belongs to the cube"), AssemblyOf(Mesh).Nodes[1].PartIndex, 0);
		TestEqual(TEXT("node 2 location"), (double)AssemblyOf(Mesh).Nodes[1].Transform.GetTranslation().X, 100.0);
		TestEqual(TEXT("node 3 belongs to the sphere"), AssemblyOf(Mesh).Nodes[2].PartIndex, 1);
	}
	TestTrue(TEXT("a material slot was merged"), Mesh.GetStaticMaterials().Num() >= 1);
	return true;
}

IMPLEMENT_SIMPLE_AUTOMATION_TEST(FNaniteAssemblyRefusalsTest, "Corvane.GeometryScripting.NaniteAssemblyRefusals",
	EAutomationTestFlags::EditorContext | EAutomationTestFlags::EngineFilter)

bool FNaniteAssemblyRefusalsTest::RunTest(const FString& Parameters)
{
	FNaniteAssemblyBuildPlan Plan;
	FString Error;

	FNaniteAssemblyBuildRequest Request = MakeRequest(TEXT("/Engine/BasicShapes/NA_CorvaneDoesNotExist"));
	TestFalse(TEXT("no parts is refused"), ValidateNaniteAssemblyRequest(Request, Plan, Error));
	TestEqual(TEXT("no parts message"), Error, FString(TEXT("no parts given; at least one part with one transform is required")));

	Request.Parts.Add(MakePart(CubePath, { FVector::ZeroVector }));
	TestFalse(TEXT("engine content is refused"), ValidateNaniteAssemblyRequest(Request, Plan, Error));
	TestEqual(TEXT("engine content message"), Error,
		FString(TEXT("output '/Engine/BasicShapes/NA_CorvaneDoesNotExist' is not a valid writable package path (engine content is read-only for this "
					 "verb; use /Game/...)")));

	Request.Output = TEXT("/Game/CorvaneAutomation/SM_RefusalCheck");
	Request.Parts[0].MeshPath = TEXT("/Engine/BasicShapes/DoesNotExist_Corvane");
	TestFalse(TEXT("a missing part is refused"), ValidateNaniteAssemblyRequest(Request, Plan, Error));
	TestEqual(TEXT("missing part message"), Error, FString(TEXT("parts[1]: static mesh not found: /Engine/BasicShapes/DoesNotExist_Corvane")));

	Request.Parts[0].MeshPath = TEXT("/Engine/BasicShapes/BasicShapeMaterial");
	TestFalse(TEXT("a material part is refused"), ValidateNaniteAssemblyRequest(Request, Plan, Error));
	TestEqual(TEXT("material part message"), Error, FString(TEXT("parts[1]: '/Engine/BasicShapes/BasicShapeMaterial' is a Material, not a StaticMesh")));

	// An existing output without overwrite: build it once, then ask again without the option.
	Request.Parts[0].MeshPath = CubePath;
	FLuaSessionData Session;
	FNaniteAssemblyBuildOutcome Outcome;
	UTEST_TRUE(TEXT("the output exists"), ExecuteNaniteAssemblyBuild(Request, Session, Outcome, Error));
	const int32 NodesBefore = AssemblyOf(*Outcome.Mesh).Nodes.Num();
	Request.bOverwrite = false;
	Request.Parts[0].Transforms.Add(FTransform::Identity);
	TestFalse(TEXT("an existing output needs overwrite"), ExecuteNaniteAssemblyBuild(Request, Session, Outcome, Error));
	TestEqual(TEXT("existing output message"), Error,
		FString(TEXT("output '/Game/CorvaneAutomation/SM_RefusalCheck.SM_RefusalCheck' already exists; pass overwrite=true to rebuild its assembly parts")));
	UStaticMesh* Existing = FindObject<UStaticMesh>(nullptr, TEXT("/Game/CorvaneAutomation/SM_RefusalCheck.SM_RefusalCheck"));
	TestTrue(TEXT("the existing mesh is unchanged"), Existing && AssemblyOf(*Existing).Nodes.Num() == NodesBefore);
	return true;
}

IMPLEMENT_SIMPLE_AUTOMATION_TEST(FNaniteAssemblySaveTest, "Corvane.GeometryScripting.NaniteAssemblySave",
	EAutomationTestFlags::EditorContext | EAutomationTestFlags::EngineFilter)

bool FNaniteAssemblySaveTest::RunTest(const FString& Parameters)
{
	UTEST_TRUE(TEXT("an editor runs"), GEditor != nullptr);
	FNaniteAssemblyBuildRequest Request = MakeRequest(TEXT("/Game/CorvaneAutomation/SM_SaveCheck"));
	Request.Parts.Add(MakePart(CubePath, { FVector(10.0, 20.0, 30.0) }));
	Request.bSave = true;
	Request.bWaitForCompile = false;

	int32 Notifications = 0;
	bool bTransactionOpenAtSave = false;
	const FDelegateHandle Handle = UPackage::PackageSavedWithContextEvent.AddLambda(
		[&Notifications, &bTransactionOpenAtSave](const FString&, UPackage* Package, FObjectPostSaveContext)
		{
			++Notifications;
			bTransactionOpenAtSave = GEditor->IsTransactionActive();
		});

	// The save runs after the build's own transaction has closed, while the caller's stays open.
	GEditor->BeginTransaction(TEXT("CorvaneAutomation"), FText::FromString(TEXT("Automation save check")), nullptr);
	FLuaSessionData Session;
	FNaniteAssemblyBuildOutcome Outcome;
	FString Error;
	const bool bBuilt = ExecuteNaniteAssemblyBuild(Request, Session, Outcome, Error);
	const bool bStillOpen = GEditor->IsTransactionActive();
	GEditor->EndTransaction();
	UPackage::PackageSavedWithContextEvent.Remove(Handle);

	UTEST_TRUE(*FString::Printf(TEXT("the build and save succeed (%s)"), *Error), bBuilt);
	TestTrue(TEXT("saved"), Outcome.bSaved);
	TestTrue(TEXT("a save waits for the compile"), Outcome.bCompiled);
	TestFalse(TEXT("the caller owned the transaction"), Outcome.bTransactionOwned);
	TestEqual(TEXT("one package-saved notification"), Notifications, 1);
	TestTrue(TEXT("the caller's transaction was open during the save"), bTransactionOpenAtSave);
	TestTrue(TEXT("the caller's transaction is still open afterwards"), bStillOpen);
	TestFalse(TEXT("the package is clean"), Outcome.Mesh->GetOutermost()->IsDirty());
	TestTrue(TEXT("the package is on disk"), FPackageName::DoesPackageExist(TEXT("/Game/CorvaneAutomation/SM_SaveCheck")));
	return true;
}

IMPLEMENT_SIMPLE_AUTOMATION_TEST(FNaniteAssemblyUndoTest, "Corvane.GeometryScripting.NaniteAssemblyUndo",
	EAutomationTestFlags::EditorContext | EAutomationTestFlags::EngineFilter)

bool FNaniteAssemblyUndoTest::RunTest(const FString& Parameters)
{
	UTEST_TRUE(TEXT("an editor runs"), GEditor != nullptr);
	UPackage* Package = CreatePackage(TEXT("/Game/CorvaneAutomation/SM_UndoCheck"));
	UTEST_TRUE(TEXT("the package exists"), Package != nullptr);
	Package->FullyLoad();
	UStaticMesh* Base = FindObject<UStaticMesh>(Package, TEXT("SM_UndoCheck"));
	if (!Base)
	{
		Base = NewObject<UStaticMesh>(Package, FName(TEXT("SM_UndoCheck")), RF_Public | RF_Standalone | RF_Transactional);
	}
	UTEST_TRUE(TEXT("the base mesh exists"), Base != nullptr);
	Base->SetFlags(RF_Transactional);
	const int32 PartsBefore = AssemblyOf(*Base).Parts.Num();
	const int32 NodesBefore = AssemblyOf(*Base).Nodes.Num();
	const bool bNaniteBefore = Base->IsNaniteEnabled();

	FNaniteAssemblyBuildRequest Request = MakeRequest(TEXT("/Game/CorvaneAutomation/SM_UndoCheck"));
	Request.Parts.Add(MakePart(CubePath, { FVector::ZeroVector, FVector(0.0, 0.0, 100.0) }));
	Request.Parts.Add(MakePart(SpherePath, { FVector(50.0, 0.0, 0.0) }));
	FLuaSessionData Session;
	FNaniteAssemblyBuildOutcome Outcome;
	FString Error;
	const bool bBuilt = ExecuteNaniteAssemblyBuild(Request, Session, Outcome, Error);
	UTEST_TRUE(*FString::Printf(TEXT("the build succeeds (%s)"), *Error), bBuilt);
	TestTrue(TEXT("the base mesh was edited in place"), Outcome.Mesh == Base && Outcome.bOverwritten);
	TestTrue(TEXT("the build owned its transaction"), Outcome.bTransactionOwned);
	TestEqual(TEXT("parts after the build"), AssemblyOf(*Base).Parts.Num(), 2);
	TestEqual(TEXT("nodes after the build"), AssemblyOf(*Base).Nodes.Num(), 3);

	UTEST_TRUE(TEXT("undo"), GEditor->UndoTransaction());
	TestEqual(TEXT("parts after undo"), AssemblyOf(*Base).Parts.Num(), PartsBefore);
	TestEqual(TEXT("nodes after undo"), AssemblyOf(*Base).Nodes.Num(), NodesBefore);
	TestEqual(TEXT("Nanite after undo"), Base->IsNaniteEnabled(), bNaniteBefore);

	UTEST_TRUE(TEXT("redo"), GEditor->RedoTransaction());
	TestEqual(TEXT("parts after redo"), AssemblyOf(*Base).Parts.Num(), 2);
	TestEqual(TEXT("nodes after redo"), AssemblyOf(*Base).Nodes.Num(), 3);
	TestTrue(TEXT("an assembly after redo"), Base->IsNaniteAssembly());
	return true;
}

#endif
