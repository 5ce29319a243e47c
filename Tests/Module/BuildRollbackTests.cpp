// A failed build puts back the dirty flags of the packages it touched, whoever changed them while its
// transaction was open: here a listener of the editor's transactions dirties the output package as the
// build's transaction starts, as an editor tool reacting to transactions may.
#include "Build/NaniteAssemblyBuild.h"
#include "Editor.h"
#include "Editor/TransBuffer.h"
#include "Headless/EditorRuntime.h"
#include "Headless/Faults.h"
#include "Headless/StringUtils.h"
#include "LuaSessionData.h"
#include "Request/NaniteAssemblyBuildRequest.h"
#include "TestProject.h"
#include "Templates/Casts.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

using namespace CVAI::NaniteAssembly;

namespace
{
	using UE::Headless::ToUtf8;

	FNaniteAssemblyBuildRequest CubeRequest(const TCHAR* Output)
	{
		FNaniteAssemblyBuildRequest Request;
		Request.Output = Output;
		FNaniteAssemblyPartRequest& Part = Request.Parts.AddDefaulted_GetRef();
		Part.MeshPath = TEXT("/Engine/BasicShapes/Cube");
		Part.Transforms.Add(FTransform::Identity);
		return Request;
	}

	class BuildRollbackTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			ASSERT_TRUE(Project.Start());
			Buffer = Cast<UTransBuffer>(GEditor->Trans.Get());
			ASSERT_NE(Buffer, nullptr);
		}

		void TearDown() override
		{
			if (Buffer)
			{
				Buffer->OnTransactionStateChanged().Remove(Listener);
			}
			UE::Headless::ClearFaults();
		}

		// Dirties the package as every transaction starts.
		void DirtyOnTransactionStart(const TCHAR* PackageName)
		{
			UPackage* Package = CreatePackage(PackageName);
			ASSERT_NE(Package, nullptr);
			Package->SetDirtyFlag(false);
			Listener = Buffer->OnTransactionStateChanged().AddLambda([Package](const FTransactionContext&, ETransactionStateEventType State)
			{
				if (State == ETransactionStateEventType::TransactionStarted)
				{
					Package->SetDirtyFlag(true);
				}
			});
		}

		// Runs a build of a cube into Output with the named step failing once.
		bool BuildFailingAt(const TCHAR* Output, const TCHAR* FaultPoint)
		{
			if (!UE::Headless::FailNext(FaultPoint))
			{
				ADD_FAILURE() << "no fault point " << ToUtf8(FaultPoint);
				return true;
			}
			FLuaSessionData Session;
			return ExecuteNaniteAssemblyBuild(CubeRequest(Output), Session, Outcome, Error);
		}

		bool IsPackageDirty(const TCHAR* PackageName) const
		{
			return FindObject<UPackage>(nullptr, PackageName)->IsDirty();
		}

		FTestProject Project;
		UTransBuffer* Buffer = nullptr;
		FNaniteAssemblyBuildOutcome Outcome;
		FString Error;
		FDelegateHandle Listener;
	};
}

TEST_F(BuildRollbackTest, AFailedCreationPutsTheDirtyFlagsBack)
{
	DirtyOnTransactionStart(TEXT("/Game/Rollback/SM_NoObject"));
	EXPECT_FALSE(BuildFailingAt(TEXT("/Game/Rollback/SM_NoObject"), TEXT("NewObject")));
	EXPECT_EQ(ToUtf8(Error), "failed to create StaticMesh '/Game/Rollback/SM_NoObject.SM_NoObject'");
	EXPECT_FALSE(IsPackageDirty(TEXT("/Game/Rollback/SM_NoObject")));
	EXPECT_EQ(UE::Headless::GetUndoHistory().Num(), 0);

	// Inside a caller's transaction nothing is cancelled: the caller's transaction stays open.
	Buffer->OnTransactionStateChanged().Remove(Listener);
	GEditor->BeginTransaction(TEXT("Caller"), FText::FromString(TEXT("Caller")), nullptr);
	EXPECT_FALSE(BuildFailingAt(TEXT("/Game/Rollback/SM_NoObject"), TEXT("NewObject")));
	EXPECT_EQ(ToUtf8(Error), "failed to create StaticMesh '/Game/Rollback/SM_NoObject.SM_NoObject'") << "no outer-transaction note for a failed creation";
	EXPECT_FALSE(Outcome.bTransactionOwned);
	EXPECT_TRUE(GEditor->IsTransactionActive());
	GEditor->EndTransaction();
}

TEST_F(BuildRollbackTest, ARefusedBuildPutsTheDirtyFlagsBackWhenItOwnsTheTransaction)
{
	DirtyOnTransactionStart(TEXT("/Game/Rollback/SM_Refused"));
	EXPECT_FALSE(BuildFailingAt(TEXT("/Game/Rollback/SM_Refused"), TEXT("FinishAssemblyBuild")));
	EXPECT_EQ(ToUtf8(Error), "FinishAssemblyBuild failed (no assembly parts were applied)");
	EXPECT_FALSE(IsPackageDirty(TEXT("/Game/Rollback/SM_Refused")));
	EXPECT_TRUE(Outcome.bTransactionOwned);
	EXPECT_EQ(Outcome.Mesh, nullptr);
}
