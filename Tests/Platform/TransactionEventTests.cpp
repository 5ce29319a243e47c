// The undo buffer's announcements: each outermost transaction's start and end, a cancel, and undo and redo,
// with the transaction's title and context, in the order an editor tool listening to them sees.
#include "PlatformTestUtils.h"
#include "TestProject.h"

#include "Editor.h"
#include "Editor/TransBuffer.h"
#include "Engine/StaticMesh.h"
#include "Headless/StringUtils.h"
#include "ScopedTransaction.h"
#include "Templates/Casts.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
	const char* NameOf(ETransactionStateEventType State)
	{
		switch (State)
		{
		case ETransactionStateEventType::TransactionStarted:
			return "started";
		case ETransactionStateEventType::TransactionCanceled:
			return "canceled";
		case ETransactionStateEventType::PreTransactionFinalized:
			return "pre-finalized";
		case ETransactionStateEventType::TransactionFinalized:
			return "finalized";
		case ETransactionStateEventType::UndoRedoStarted:
			return "undo-redo-started";
		case ETransactionStateEventType::UndoRedoFinalized:
			return "undo-redo-finalized";
		}
		return "?";
	}
}

TEST(TransactionEvents, OutermostTransactionsCancelsUndoAndRedoAreAnnounced)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UTransBuffer* Buffer = Cast<UTransBuffer>(GEditor->Trans.Get());
	ASSERT_NE(Buffer, nullptr);
	std::vector<std::string> Events;
	const FDelegateHandle Handle = Buffer->OnTransactionStateChanged().AddLambda([&Events](const FTransactionContext& Context, ETransactionStateEventType State)
	{
		Events.push_back(std::string(NameOf(State)) + " " + UE::Headless::ToUtf8(Context.Title.ToString()) + " " + UE::Headless::ToUtf8(Context.Context));
	});

	UStaticMesh* Mesh = NewObject<UStaticMesh>(CreatePackage(TEXT("/Game/Events/SM_Events")), FName(TEXT("SM_Events")), RF_Public | RF_Transactional);
	{
		FScopedTransaction Outer(TEXT("Tool"), FText::FromString(TEXT("Outer")), nullptr);
		// A nested scope only counts: it is not announced.
		FScopedTransaction Inner(FText::FromString(TEXT("Inner")));
		Mesh->Modify();
		Mesh->GetNaniteSettings().bEnabled = true;
	}
	{
		FScopedTransaction Cancelled(FText::FromString(TEXT("Cancelled")));
		Cancelled.Cancel();
	}
	ASSERT_TRUE(GEditor->UndoTransaction());
	ASSERT_TRUE(GEditor->RedoTransaction());
	Buffer->OnTransactionStateChanged().Remove(Handle);

	const std::vector<std::string> Expected = { "started Outer Tool", "pre-finalized Outer Tool", "finalized Outer Tool", "started Cancelled ",
		"canceled Cancelled ", "undo-redo-started Outer Tool", "undo-redo-finalized Outer Tool", "undo-redo-started Outer Tool",
		"undo-redo-finalized Outer Tool" };
	EXPECT_EQ(Events, Expected);
}
