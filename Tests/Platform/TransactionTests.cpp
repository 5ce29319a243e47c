// The editor's undo buffer through FScopedTransaction and UObject::Modify.
#include "PlatformTestUtils.h"
#include "TestProject.h"

#include "CoreGlobals.h"
#include "Editor.h"
#include "Editor/Transactor.h"
#include "Engine/StaticMesh.h"
#include "Headless/EditorRuntime.h"
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
