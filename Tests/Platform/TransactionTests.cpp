// The editor's undo buffer through FScopedTransaction and UObject::Modify.
#include "PlatformTestUtils.h"
#include "TestProject.h"

#include "CoreGlobals.h"
#include "Editor.h"
#include "Editor/Transactor.h"
#include "Engine/StaticMesh.h"
#include "Headless/EditorRuntime.h"
#include "Headless/ObjectRegistry.h"
#include "Headless/StaticMeshGeometry.h"
#include "Internationalization/Internationalization.h"
#include "Materials/Material.h"
#include "ScopedTransaction.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

#include <cstring>

using PlatformTest::Utf8;

namespace
{
	const EObjectFlags AssetFlags = RF_Public | RF_Standalone;

	std::vector<std::string> UndoHistory()
	{
		std::vector<std::string> Titles;
		for (const FString& Title : UE::Headless::GetUndoHistory())
		{
			Titles.push_back(Utf8(Title));
		}
		return Titles;
	}

	// Everything of a mesh that a transaction records.
	struct FMeshState
	{
		TArray<FStaticMaterial> Materials;
		FMeshNaniteSettings Settings;
		UE::Headless::FStaticMeshGeometry Geometry;

		explicit FMeshState(const UStaticMesh& Mesh)
			: Materials(Mesh.GetStaticMaterials())
			, Settings(Mesh.GetNaniteSettings())
			, Geometry(UE::Headless::GetMeshGeometry(Mesh))
		{
		}

		bool Matches(const UStaticMesh& Mesh) const
		{
			const UE::Headless::FStaticMeshGeometry& Other = UE::Headless::GetMeshGeometry(Mesh);
			return Materials == Mesh.GetStaticMaterials() && Settings == Mesh.GetNaniteSettings() && Geometry.NumSourceModels == Other.NumSourceModels
				&& Geometry.bHasMeshDescription == Other.bHasMeshDescription && Geometry.Positions == Other.Positions
				&& Geometry.Normals == Other.Normals && Geometry.UVs == Other.UVs
				&& Geometry.Triangles.Num() == Other.Triangles.Num()
				&& std::memcmp(Geometry.Triangles.GetData(), Other.Triangles.GetData(), sizeof(UE::Headless::FMeshTriangle) * Other.Triangles.Num()) == 0
				&& Geometry.PolygonGroupSlotNames == Other.PolygonGroupSlotNames && Geometry.SectionMaterialIndices == Other.SectionMaterialIndices;
		}
	};

	class FTransactionTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			ASSERT_TRUE(Project.Start());
			MaterialA = NewObject<UMaterial>(CreatePackage(TEXT("/Game/Undo/M_A")), FName(TEXT("M_A")), AssetFlags);
			MaterialB = NewObject<UMaterial>(CreatePackage(TEXT("/Game/Undo/M_B")), FName(TEXT("M_B")), AssetFlags);
			Mesh = NewObject<UStaticMesh>(CreatePackage(TEXT("/Game/Undo/Rock")), FName(TEXT("Rock")), AssetFlags | RF_Transactional);
			TArray<FStaticMaterial> Materials;
			Materials.Add(FStaticMaterial(MaterialA, FName(TEXT("Bark")), FName(TEXT("Bark"))));
			Mesh->SetStaticMaterials(Materials);
			UE::Headless::GetMeshGeometry(*Mesh) = UE::Headless::MakeBasicShapeGeometry(UE::Headless::EBasicShape::Cube, FName(TEXT("Bark")));
		}

		// Changes every recorded part of the mesh.
		void Edit(const TCHAR* SlotName)
		{
			Mesh->GetStaticMaterials().Add(FStaticMaterial(MaterialB, FName(SlotName), FName(SlotName)));
			FMeshNaniteSettings& Settings = Mesh->GetNaniteSettings();
			Settings.bEnabled = !Settings.bEnabled;
			Settings.KeepPercentTriangles *= 0.5f;
			FNaniteAssemblyPart& Part = Settings.NaniteAssemblyData.Parts.AddDefaulted_GetRef();
			Part.MeshObjectPath = FSoftObjectPath(FString(TEXT("/Engine/BasicShapes/Cube.Cube")));
			Part.MaterialRemap.Add(Settings.NaniteAssemblyData.Parts.Num());
			FNaniteAssemblyNode& Node = Settings.NaniteAssemblyData.Nodes.AddDefaulted_GetRef();
			Node.PartIndex = Settings.NaniteAssemblyData.Parts.Num() - 1;
			Node.Transform = FTransform3f(FTransform(FRotator(10, 20, 30), FVector(1, 2, 3), FVector(2, 2, 2)));
			UE::Headless::FStaticMeshGeometry& Geometry = UE::Headless::GetMeshGeometry(*Mesh);
			Geometry.Positions.Add(FVector3f(1.5f, -2.25f, 3.0f));
			Geometry.PolygonGroupSlotNames.Add(FName(SlotName));
		}

		FTestProject Project;
		UMaterial* MaterialA = nullptr;
		UMaterial* MaterialB = nullptr;
		UStaticMesh* Mesh = nullptr;
	};
}

TEST_F(FTransactionTest, UndoAndRedoSwapTheRecordedStateExactly)
{
	const FMeshState Before(*Mesh);
	{
		FScopedTransaction Transaction(NSLOCTEXT("HeadlessTests", "EditRock", "Edit Rock"));
		EXPECT_TRUE(Transaction.IsOutstanding());
		EXPECT_TRUE(Mesh->Modify());
		Edit(TEXT("Moss"));
		// Only the state before the first change is kept.
		EXPECT_TRUE(Mesh->Modify());
		Edit(TEXT("Lichen"));
	}
	const FMeshState After(*Mesh);
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "Edit Rock" }));
	EXPECT_TRUE(Mesh->GetPackage()->IsDirty());

	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_TRUE(Before.Matches(*Mesh));
	EXPECT_TRUE(UndoHistory().empty());
	EXPECT_TRUE(GEditor->Trans->CanRedo());
	// The undone state is rebuilt.
	ASSERT_NE(Mesh->GetRenderData(), nullptr);
	EXPECT_FALSE(Mesh->IsCompiling());

	ASSERT_TRUE(GEditor->RedoTransaction());
	EXPECT_TRUE(After.Matches(*Mesh));
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "Edit Rock" }));
	FText Reason;
	EXPECT_FALSE(GEditor->Trans->CanRedo(&Reason) || GEditor->RedoTransaction());
	EXPECT_EQ(Utf8(Reason), "(Nothing to redo)");
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_FALSE(GEditor->Trans->CanUndo(&Reason) || GEditor->UndoTransaction());
	EXPECT_EQ(Utf8(Reason), "(Can't undo after: Startup)");
}

TEST_F(FTransactionTest, NestedScopesCountAndEmptyTransactionsKeepTheRedo)
{
	{
		FScopedTransaction Outer(NSLOCTEXT("HeadlessTests", "Outer", "Outer"));
		{
			FScopedTransaction Inner(NSLOCTEXT("HeadlessTests", "Inner", "Inner"));
			EXPECT_EQ(UE::Headless::GetTransactionDepth(), 2);
			EXPECT_TRUE(Mesh->Modify());
			Edit(TEXT("Moss"));
		}
		EXPECT_EQ(UE::Headless::GetTransactionDepth(), 1);
		EXPECT_TRUE(GEditor->IsTransactionActive());
		EXPECT_EQ(Utf8(GEditor->GetTransactionName()), "Outer");
		FText Reason;
		EXPECT_FALSE(GEditor->Trans->CanUndo(&Reason));
		EXPECT_EQ(Utf8(Reason), "(Can't undo while 'Outer' is in progress)");
		EXPECT_FALSE(GEditor->UndoTransaction());
	}
	EXPECT_EQ(UE::Headless::GetTransactionDepth(), 0);
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "Outer" }));
	const FMeshState Edited(*Mesh);
	ASSERT_TRUE(GEditor->UndoTransaction());

	// A transaction that records nothing leaves no step, and what could be redone still can.
	UStaticMesh* Plain = NewObject<UStaticMesh>(Mesh->GetPackage(), FName(TEXT("Plain")), AssetFlags);
	{
		FScopedTransaction Empty(NSLOCTEXT("HeadlessTests", "Empty", "Empty"));
		EXPECT_FALSE(Plain->Modify());
	}
	EXPECT_TRUE(UndoHistory().empty());
	ASSERT_TRUE(GEditor->RedoTransaction());
	EXPECT_TRUE(Edited.Matches(*Mesh));
	ASSERT_TRUE(GEditor->UndoTransaction());

	// A recorded transaction drops the steps that could be redone.
	{
		FScopedTransaction Fresh(NSLOCTEXT("HeadlessTests", "Fresh", "Fresh"));
		EXPECT_TRUE(Mesh->Modify());
		Edit(TEXT("Fern"));
	}
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "Fresh" }));
	EXPECT_FALSE(GEditor->Trans->CanRedo());

	// Undoing without redo forgets the step altogether.
	EXPECT_TRUE(GEditor->UndoTransaction(false));
	EXPECT_FALSE(GEditor->Trans->CanRedo());
	EXPECT_EQ(GEditor->Trans->GetQueueLength(), 0);
}

TEST_F(FTransactionTest, CancelThrowsTheWholeRecordAwayAndRevertsNothing)
{
	{
		FScopedTransaction First(NSLOCTEXT("HeadlessTests", "First", "First"));
		Mesh->Modify();
		Edit(TEXT("Moss"));
	}
	ASSERT_TRUE(GEditor->UndoTransaction());
	UE::Headless::ClearEngineLog();
	{
		FScopedTransaction Outer(NSLOCTEXT("HeadlessTests", "Cancelled", "Cancelled"));
		FScopedTransaction Inner(NSLOCTEXT("HeadlessTests", "Inner", "Inner"));
		EXPECT_TRUE(Mesh->Modify());
		Edit(TEXT("Kept"));
		Inner.Cancel();
		EXPECT_FALSE(Inner.IsOutstanding());
		EXPECT_TRUE(Outer.IsOutstanding());
		EXPECT_EQ(UE::Headless::GetTransactionDepth(), 0);
		EXPECT_FALSE(GEditor->IsTransactionActive());
		// Nothing is open any more, so this records nothing.
		EXPECT_FALSE(Mesh->Modify());
		Inner.Cancel();
	}
	EXPECT_EQ(PlatformTest::LogOf(TEXT("LogEditorTransaction")),
		std::vector<std::string>({ "Warning: Canceling transaction partially is unsupported. Canceling Cancelled entirely." }));
	EXPECT_EQ(Utf8(Mesh->GetStaticMaterials().Last().MaterialSlotName), "Kept");
	EXPECT_TRUE(UndoHistory().empty());
	// The step undone before the cancelled transaction can still be redone.
	EXPECT_TRUE(GEditor->Trans->CanRedo());

	{
		FScopedTransaction Whole(NSLOCTEXT("HeadlessTests", "Whole", "Whole"));
		Mesh->Modify();
		Edit(TEXT("Gone"));
		Whole.Cancel();
	}
	EXPECT_EQ(Utf8(Mesh->GetStaticMaterials().Last().MaterialSlotName), "Gone");
	EXPECT_EQ(PlatformTest::LogOf(TEXT("LogEditorTransaction")).size(), 1u);
	EXPECT_TRUE(GEditor->Trans->CanRedo());
}

TEST_F(FTransactionTest, ResetForgetsEveryStepAndKeepsTheObjectsAsTheyAre)
{
	for (const TCHAR* Slot : { TEXT("One"), TEXT("Two") })
	{
		FScopedTransaction Step(NSLOCTEXT("HeadlessTests", "Step", "Step"));
		Mesh->Modify();
		Edit(Slot);
	}
	ASSERT_TRUE(GEditor->UndoTransaction());
	ASSERT_TRUE(GEditor->Trans->CanRedo());
	const FMeshState Before(*Mesh);
	GEditor->Trans->Reset(NSLOCTEXT("HeadlessTests", "Reset", "Reset"));
	EXPECT_TRUE(Before.Matches(*Mesh));
	EXPECT_FALSE(GEditor->Trans->CanUndo());
	EXPECT_FALSE(GEditor->Trans->CanRedo());
	EXPECT_TRUE(UndoHistory().empty());
	EXPECT_FALSE(GEditor->UndoTransaction());

	// The buffer records again afterwards.
	{
		FScopedTransaction Step(NSLOCTEXT("HeadlessTests", "After", "After"));
		Mesh->Modify();
		Edit(TEXT("Three"));
	}
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "After" }));
	EXPECT_TRUE(GEditor->UndoTransaction());
	EXPECT_TRUE(Before.Matches(*Mesh));
}

TEST_F(FTransactionTest, OnlyTransactionalObjectsAreRecordedWhenATransactionCanOpen)
{
	UStaticMesh* Plain = NewObject<UStaticMesh>(CreatePackage(TEXT("/Game/Undo/Plain")), FName(TEXT("Plain")), AssetFlags);
	{
		FScopedTransaction Transaction(NSLOCTEXT("HeadlessTests", "Plain", "Plain"));
		EXPECT_FALSE(Plain->Modify());
		EXPECT_TRUE(Plain->GetPackage()->IsDirty());
	}
	EXPECT_TRUE(UndoHistory().empty());

	// No transaction opens when not asked for, without an editor, or while the editor loads a package.
	const FText Title = NSLOCTEXT("HeadlessTests", "Refused", "Refused");
	EXPECT_FALSE(FScopedTransaction(Title, false).IsOutstanding());
	UE::Headless::SetEditorAvailable(false);
	const bool bOpenedWithoutEditor = FScopedTransaction(Title).IsOutstanding();
	UE::Headless::SetEditorAvailable(true);
	GIsEditorLoadingPackage = true;
	const bool bOpenedWhileLoading = FScopedTransaction(Title).IsOutstanding();
	GIsEditorLoadingPackage = false;
	EXPECT_FALSE(bOpenedWithoutEditor || bOpenedWhileLoading);
	EXPECT_TRUE(UndoHistory().empty());

	// Removing a recorded object is undone with the rest of the transaction.
	UMaterial* Sub = NewObject<UMaterial>(Mesh, FName(TEXT("Sub")), RF_Transactional);
	{
		FScopedTransaction Remove(NSLOCTEXT("HeadlessTests", "Remove", "Remove Sub"));
		EXPECT_TRUE(Sub->Modify());
		Sub->MarkAsGarbage();
	}
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), Mesh, TEXT("Sub")), nullptr);
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), Mesh, TEXT("Sub")), Sub);
	ASSERT_TRUE(GEditor->RedoTransaction());
	EXPECT_TRUE(Sub->HasAnyInternalFlags(EInternalObjectFlags::Garbage));
}

TEST_F(FTransactionTest, BeginAndEndCountTheOpenLevelsAndAnUnmatchedEndChangesNothing)
{
	UTransactor& Trans = *GEditor->Trans.Get();
	// Begin answers how many were open before it, End how many were open when it was called.
	EXPECT_EQ(Trans.Begin(nullptr, NSLOCTEXT("HeadlessTests", "Outer", "Outer")), 0);
	EXPECT_EQ(Trans.Begin(nullptr, NSLOCTEXT("HeadlessTests", "Inner", "Inner")), 1);
	EXPECT_TRUE(Mesh->Modify());
	Edit(TEXT("Moss"));
	EXPECT_EQ(Trans.End(), 2);
	EXPECT_TRUE(Trans.IsActive());
	EXPECT_EQ(Trans.End(), 1);
	EXPECT_FALSE(Trans.IsActive());
	EXPECT_EQ(Trans.End(), 0);
	EXPECT_EQ(GEditor->EndTransaction(), 0);
	EXPECT_EQ(UE::Headless::GetTransactionDepth(), 0);
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "Outer" }));

	// The extra Ends left nothing behind: the next Begin opens a transaction of its own.
	EXPECT_EQ(GEditor->BeginTransaction(NSLOCTEXT("HeadlessTests", "Next", "Next")), 0);
	EXPECT_TRUE(Mesh->Modify());
	Edit(TEXT("Fern"));
	EXPECT_EQ(GEditor->EndTransaction(), 1);
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "Outer", "Next" }));
	EXPECT_EQ(Trans.GetQueueLength(), 2);
}

TEST_F(FTransactionTest, SeveralStepsUndoNewestFirstAndRedoOldestFirst)
{
	const auto Slots = [this]
	{
		std::string Names;
		for (const FStaticMaterial& Material : Mesh->GetStaticMaterials())
		{
			Names += (Names.empty() ? "" : ",") + Utf8(Material.MaterialSlotName);
		}
		return Names;
	};
	for (const TCHAR* Slot : { TEXT("One"), TEXT("Two"), TEXT("Three") })
	{
		FScopedTransaction Step(FText::FromString(FString(TEXT("Add ")) + Slot));
		Mesh->Modify();
		Mesh->GetStaticMaterials().Add(FStaticMaterial(MaterialB, FName(Slot), FName(Slot)));
	}
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "Add One", "Add Two", "Add Three" }));

	ASSERT_TRUE(GEditor->UndoTransaction());
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_EQ(Slots(), "Bark,One");
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "Add One" }));
	EXPECT_EQ(GEditor->Trans->GetUndoCount(), 2);
	ASSERT_TRUE(GEditor->RedoTransaction());
	EXPECT_EQ(Slots(), "Bark,One,Two");
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "Add One", "Add Two" }));

	// A new step drops only what could still be redone.
	{
		FScopedTransaction Step(NSLOCTEXT("HeadlessTests", "AddFour", "Add Four"));
		Mesh->Modify();
		Mesh->GetStaticMaterials().Add(FStaticMaterial(MaterialB, FName(TEXT("Four")), FName(TEXT("Four"))));
	}
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "Add One", "Add Two", "Add Four" }));
	EXPECT_FALSE(GEditor->RedoTransaction());
	ASSERT_TRUE(GEditor->UndoTransaction());
	ASSERT_TRUE(GEditor->UndoTransaction());
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_EQ(Slots(), "Bark");
	EXPECT_FALSE(GEditor->UndoTransaction());
}

TEST_F(FTransactionTest, NothingCanBeRedoneWhileATransactionIsOpenAndTheTextsSayWhy)
{
	{
		FScopedTransaction Step(NSLOCTEXT("HeadlessTests", "First", "First"));
		Mesh->Modify();
		Edit(TEXT("Moss"));
	}
	ASSERT_TRUE(GEditor->UndoTransaction());
	const FMeshState Undone(*Mesh);
	{
		FScopedTransaction Outer(NSLOCTEXT("HeadlessTests", "Outer", "Outer"));
		FScopedTransaction Inner(NSLOCTEXT("HeadlessTests", "Inner", "Inner"));
		FText Reason;
		EXPECT_FALSE(GEditor->Trans->CanRedo(&Reason));
		EXPECT_EQ(Utf8(Reason), "(Can't redo while 'Outer' is in progress)");
		EXPECT_FALSE(GEditor->RedoTransaction());
		EXPECT_TRUE(Undone.Matches(*Mesh));
	}
	// The open transaction recorded nothing, so the step is still there to redo.
	ASSERT_TRUE(GEditor->RedoTransaction());

	// With nothing left to undo, the text names the last reset of the buffer.
	GEditor->Trans->Reset(NSLOCTEXT("HeadlessTests", "Cleared", "Cleared for the test"));
	FText Reason;
	EXPECT_FALSE(GEditor->Trans->CanUndo(&Reason));
	EXPECT_EQ(Utf8(Reason), "(Can't undo after: Cleared for the test)");
	EXPECT_FALSE(GEditor->Trans->CanRedo(&Reason));
	EXPECT_EQ(Utf8(Reason), "(Nothing to redo)");
}

TEST_F(FTransactionTest, ResetWhileATransactionIsOpenDropsItAndRecordsNothingMore)
{
	{
		FScopedTransaction Doomed(NSLOCTEXT("HeadlessTests", "Doomed", "Doomed"));
		EXPECT_TRUE(Mesh->Modify());
		Edit(TEXT("Moss"));
		GEditor->Trans->Reset(NSLOCTEXT("HeadlessTests", "Purged", "Purged"));
		EXPECT_EQ(UE::Headless::GetTransactionDepth(), 0);
		EXPECT_FALSE(GEditor->IsTransactionActive());
		EXPECT_FALSE(Mesh->Modify());
		Edit(TEXT("Lichen"));
	}
	// The scope's end closes nothing, and the edits stay as they were made.
	EXPECT_EQ(UE::Headless::GetTransactionDepth(), 0);
	EXPECT_TRUE(UndoHistory().empty());
	EXPECT_EQ(GEditor->Trans->GetQueueLength(), 0);
	EXPECT_EQ(Utf8(Mesh->GetStaticMaterials().Last().MaterialSlotName), "Lichen");
	FText Reason;
	EXPECT_FALSE(GEditor->Trans->CanUndo(&Reason));
	EXPECT_EQ(Utf8(Reason), "(Can't undo after: Purged)");

	FScopedTransaction After(NSLOCTEXT("HeadlessTests", "After", "After"));
	EXPECT_TRUE(After.IsOutstanding());
	EXPECT_TRUE(Mesh->Modify());
}

TEST_F(FTransactionTest, ModifyingWithoutChangingAnythingLeavesNoStep)
{
	{
		FScopedTransaction Step(NSLOCTEXT("HeadlessTests", "Real", "Real"));
		Mesh->Modify();
		Edit(TEXT("Moss"));
	}
	ASSERT_TRUE(GEditor->UndoTransaction());
	{
		FScopedTransaction Idle(NSLOCTEXT("HeadlessTests", "Idle", "Idle"));
		EXPECT_TRUE(Mesh->Modify());
	}
	{
		// Changed and changed back before the end: no change either.
		FScopedTransaction Back(NSLOCTEXT("HeadlessTests", "Back", "Back"));
		EXPECT_TRUE(Mesh->Modify());
		Mesh->GetNaniteSettings().bEnabled = !Mesh->GetNaniteSettings().bEnabled;
		Mesh->GetNaniteSettings().bEnabled = !Mesh->GetNaniteSettings().bEnabled;
	}
	EXPECT_TRUE(UndoHistory().empty());
	EXPECT_EQ(GEditor->Trans->GetQueueLength(), 1);
	ASSERT_TRUE(GEditor->RedoTransaction());
	EXPECT_EQ(Utf8(Mesh->GetStaticMaterials().Last().MaterialSlotName), "Moss");
}

TEST_F(FTransactionTest, CreatedObjectsAreUndoneToGarbageAndRedoneAlive)
{
	UPackage* Package = CreatePackage(TEXT("/Game/Undo/M_New"));
	UMaterial* Created = nullptr;
	UMaterial* Untracked = nullptr;
	{
		FScopedTransaction Create(NSLOCTEXT("HeadlessTests", "Create", "Create"));
		Created = NewObject<UMaterial>(Package, FName(TEXT("M_New")), AssetFlags | RF_Transactional);
		Untracked = NewObject<UMaterial>(Mesh, FName(TEXT("Untracked")));
		EXPECT_TRUE(Mesh->Modify());
		Mesh->GetStaticMaterials()[0].MaterialInterface = Created;
	}
	ASSERT_TRUE(IsValid(Created));

	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_FALSE(IsValid(Created));
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/Game/Undo/M_New.M_New")), nullptr);
	EXPECT_EQ(UE::Headless::FindObjectIncludingGarbage(TEXT("/Game/Undo/M_New.M_New")), Created);
	EXPECT_TRUE(UPackage::IsEmptyPackage(Package));
	EXPECT_EQ(Mesh->GetStaticMaterials()[0].MaterialInterface.Get(), MaterialA);
	// Only transactional objects record their creation.
	EXPECT_TRUE(IsValid(Untracked));

	ASSERT_TRUE(GEditor->RedoTransaction());
	EXPECT_TRUE(IsValid(Created));
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/Game/Undo/M_New.M_New")), Created);
	// The mesh refers to the object that the same transaction brought back.
	EXPECT_EQ(Mesh->GetStaticMaterials()[0].MaterialInterface.Get(), Created);

	// A transaction that only creates an object is a step of its own; one made outside any is not recorded.
	{
		FScopedTransaction CreateOnly(NSLOCTEXT("HeadlessTests", "CreateOnly", "Create Only"));
		NewObject<UMaterial>(Package, FName(TEXT("M_Second")), RF_Transactional);
	}
	UMaterial* Outside = NewObject<UMaterial>(Package, FName(TEXT("M_Outside")), RF_Transactional);
	EXPECT_EQ(UndoHistory(), std::vector<std::string>({ "Create", "Create Only" }));
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), Package, TEXT("M_Second")), nullptr);
	EXPECT_TRUE(IsValid(Outside) && IsValid(Created));
}

TEST_F(FTransactionTest, RemovingAReferencedObjectIsUndoneTogetherWithTheReference)
{
	MaterialA->SetFlags(RF_Transactional);
	{
		// The removed object is recorded before the one that refers to it.
		FScopedTransaction Remove(NSLOCTEXT("HeadlessTests", "Remove", "Remove M_A"));
		EXPECT_TRUE(MaterialA->Modify());
		EXPECT_TRUE(Mesh->Modify());
		MaterialA->MarkAsGarbage();
		Mesh->GetStaticMaterials()[0].MaterialInterface = nullptr;
	}
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_TRUE(IsValid(MaterialA));
	EXPECT_EQ(Mesh->GetStaticMaterials()[0].MaterialInterface.Get(), MaterialA);
	ASSERT_TRUE(GEditor->RedoTransaction());
	EXPECT_FALSE(IsValid(MaterialA));
	EXPECT_EQ(Mesh->GetStaticMaterials()[0].MaterialInterface.Get(), nullptr);
}

TEST_F(FTransactionTest, ScriptAndPlayInEditorPackagesStayOutOfTheBuffer)
{
	UPackage* Script = CreatePackage(TEXT("/Game/Undo/Scripted"));
	Script->SetPackageFlags(PKG_ContainsScript);
	UMaterial* InScript = NewObject<UMaterial>(Script, FName(TEXT("Scripted")), AssetFlags | RF_Transactional);
	UPackage* Play = CreatePackage(TEXT("/Game/Undo/UEDPIE_0_Level"));
	Play->SetPackageFlags(PKG_PlayInEditor);
	UMaterial* InPlay = NewObject<UMaterial>(Play, FName(TEXT("Played")), AssetFlags | RF_Transactional);
	Script->SetDirtyFlag(false);

	// A script package is neither recorded nor dirtied by Modify, inside a transaction or outside; an object
	// of a Play In Editor world never makes an undo step.
	EXPECT_FALSE(InScript->Modify());
	EXPECT_FALSE(Script->IsDirty());
	{
		FScopedTransaction Transaction(NSLOCTEXT("HeadlessTests", "Scripted", "Scripted"));
		EXPECT_FALSE(InScript->Modify());
		InPlay->Modify();
	}
	EXPECT_FALSE(Script->IsDirty());
	EXPECT_TRUE(UndoHistory().empty());
}

// An object that writes down what it sees of its partner when an undo starts and ends.
class UUndoProbe : public UObject
{
	DECLARE_CLASS(UUndoProbe, UObject, CLASS_None, CASTCLASS_None, TEXT("/Script/HeadlessTests"), )

public:
	int32 Value = 0;
	UUndoProbe* Partner = nullptr;
	std::vector<std::string> Seen;

	void Serialize(FArchive& Ar) override
	{
		Super::Serialize(Ar);
		Ar << Value;
	}

	void PreEditUndo() override
	{
		Seen.push_back("pre " + std::to_string(Partner->Value) + (GIsTransacting ? " transacting" : ""));
	}

	void PostEditUndo() override
	{
		Seen.push_back("post " + std::to_string(Partner->Value) + (GIsTransacting ? " transacting" : ""));
	}
};

IMPLEMENT_HEADLESS_CLASS(UUndoProbe, "UndoProbe")

TEST_F(FTransactionTest, EveryObjectIsToldBeforeAndAfterTheWholeUndo)
{
	UUndoProbe* First = NewObject<UUndoProbe>(Mesh, FName(TEXT("First")), RF_Transactional);
	UUndoProbe* Second = NewObject<UUndoProbe>(Mesh, FName(TEXT("Second")), RF_Transactional);
	First->Partner = Second;
	Second->Partner = First;
	{
		FScopedTransaction Step(NSLOCTEXT("HeadlessTests", "Probe", "Probe"));
		First->Modify();
		Second->Modify();
		First->Value = 1;
		Second->Value = 2;
	}
	ASSERT_TRUE(GEditor->UndoTransaction());
	// Each hears of the undo before any state is read back and after all of them are.
	EXPECT_EQ(First->Seen, std::vector<std::string>({ "pre 2 transacting", "post 0 transacting" }));
	EXPECT_EQ(Second->Seen, std::vector<std::string>({ "pre 1 transacting", "post 0 transacting" }));
	EXPECT_FALSE(GIsTransacting);
	ASSERT_TRUE(GEditor->RedoTransaction());
	EXPECT_EQ(First->Value + Second->Value * 10, 21);
	EXPECT_EQ(First->Seen.back(), "post 2 transacting");

	// Once the undo is over, Modify dirties again.
	ASSERT_TRUE(GEditor->UndoTransaction());
	Mesh->GetPackage()->SetDirtyFlag(false);
	First->Modify();
	EXPECT_TRUE(Mesh->GetPackage()->IsDirty());
}
