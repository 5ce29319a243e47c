#include "Editor/TransBuffer.h"

#include "CoreGlobals.h"
#include "Headless/ObjectRegistry.h"
#include "Logging/LogMacros.h"
#include "Misc/ITransaction.h"
#include "Transaction.h"

DEFINE_LOG_CATEGORY_STATIC(LogEditorTransaction, Log, All);

IMPLEMENT_HEADLESS_CLASS(UTransBuffer, "TransBuffer")

UTransBuffer::UTransBuffer() = default;

UTransBuffer::~UTransBuffer()
{
	for (UE::Headless::FTransaction* Transaction : UndoBuffer)
	{
		delete Transaction;
	}
	for (UE::Headless::FTransaction* Transaction : RemovedTransactions)
	{
		delete Transaction;
	}
}

int32 UTransBuffer::Begin(const TCHAR* SessionContext, const FText& Description)
{
	const int32 Result = ActiveCount;
	if (ActiveCount++ == 0)
	{
		// The steps past the undo position can no longer be redone once a new transaction commits; they
		// wait aside in case this one records nothing.
		for (UE::Headless::FTransaction* Transaction : RemovedTransactions)
		{
			delete Transaction;
		}
		RemovedTransactions.Reset();
		for (int32 Index = UndoBuffer.Num() - UndoCount; Index < UndoBuffer.Num(); ++Index)
		{
			RemovedTransactions.Add(UndoBuffer[Index]);
		}
		UndoBuffer.SetNum(UndoBuffer.Num() - UndoCount);
		PreviousUndoCount = UndoCount;
		UndoCount = 0;
		UndoBuffer.Add(new UE::Headless::FTransaction(SessionContext, Description));
		GUndo = UndoBuffer.Last();
		TransactionStateChangedDelegate.Broadcast(UndoBuffer.Last()->GetContext(), ETransactionStateEventType::TransactionStarted);
	}
	return Result;
}

int32 UTransBuffer::End()
{
	const int32 Result = ActiveCount;
	if (ActiveCount >= 1 && --ActiveCount == 0)
	{
		UE::Headless::FTransaction* Transaction = UndoBuffer.Last();
		const FTransactionContext Context = Transaction->GetContext();
		TransactionStateChangedDelegate.Broadcast(Context, ETransactionStateEventType::PreTransactionFinalized);
		Transaction->Finalize();
		if (Transaction->IsTransient())
		{
			UndoBuffer.Pop();
			delete Transaction;
			UndoBuffer.Append(RemovedTransactions);
			RemovedTransactions.Reset();
			UndoCount = PreviousUndoCount;
		}
		else
		{
			for (UE::Headless::FTransaction* Removed : RemovedTransactions)
			{
				delete Removed;
			}
			RemovedTransactions.Reset();
		}
		GUndo = nullptr;
		TransactionStateChangedDelegate.Broadcast(Context, ETransactionStateEventType::TransactionFinalized);
	}
	return Result;
}

void UTransBuffer::Cancel(int32 StartIndex)
{
	if (ActiveCount <= 0)
	{
		return;
	}
	UE::Headless::FTransaction* Transaction = UndoBuffer.Last();
	if (StartIndex != 0)
	{
		UE_LOG(LogEditorTransaction, Warning, TEXT("Canceling transaction partially is unsupported. Canceling %s entirely."), *Transaction->GetTitle().ToString());
	}
	const FTransactionContext Context = Transaction->GetContext();
	UndoBuffer.Pop();
	delete Transaction;
	UndoBuffer.Append(RemovedTransactions);
	RemovedTransactions.Reset();
	UndoCount = PreviousUndoCount;
	ActiveCount = 0;
	GUndo = nullptr;
	TransactionStateChangedDelegate.Broadcast(Context, ETransactionStateEventType::TransactionCanceled);
}

void UTransBuffer::Reset(const FText& Reason)
{
	if (ActiveCount != 0)
	{
		UE_LOG(LogEditorTransaction, Warning, TEXT("Non zero active count in UTransBuffer::Reset (%s)"), *Reason.ToString());
	}
	for (UE::Headless::FTransaction* Transaction : UndoBuffer)
	{
		delete Transaction;
	}
	for (UE::Headless::FTransaction* Transaction : RemovedTransactions)
	{
		delete Transaction;
	}
	UndoBuffer.Reset();
	RemovedTransactions.Reset();
	UndoCount = 0;
	PreviousUndoCount = 0;
	ActiveCount = 0;
	ResetReason = Reason;
	GUndo = nullptr;
}

bool UTransBuffer::CanUndo(FText* Text)
{
	if (ActiveCount > 0)
	{
		if (Text)
		{
			*Text = FText::FromString(FString::Printf(TEXT("(Can't undo while '%s' is in progress)"), *GetOpenTransactionTitle().ToString()));
		}
		return false;
	}
	if (UndoBuffer.Num() == UndoCount)
	{
		if (Text)
		{
			*Text = FText::FromString(FString::Printf(TEXT("(Can't undo after: %s)"), *ResetReason.ToString()));
		}
		return false;
	}
	return true;
}

bool UTransBuffer::CanRedo(FText* Text)
{
	if (ActiveCount > 0)
	{
		if (Text)
		{
			*Text = FText::FromString(FString::Printf(TEXT("(Can't redo while '%s' is in progress)"), *GetOpenTransactionTitle().ToString()));
		}
		return false;
	}
	if (UndoCount == 0)
	{
		if (Text)
		{
			*Text = FText::FromString(TEXT("(Nothing to redo)"));
		}
		return false;
	}
	return true;
}

bool UTransBuffer::Undo(bool bCanRedo)
{
	if (!CanUndo())
	{
		return false;
	}
	++UndoCount;
	UE::Headless::FTransaction* Transaction = UndoBuffer[UndoBuffer.Num() - UndoCount];
	ApplyUndoRedo(*Transaction);
	if (!bCanRedo)
	{
		for (int32 Index = UndoBuffer.Num() - UndoCount; Index < UndoBuffer.Num(); ++Index)
		{
			delete UndoBuffer[Index];
		}
		UndoBuffer.SetNum(UndoBuffer.Num() - UndoCount);
		UndoCount = 0;
	}
	return true;
}

bool UTransBuffer::Redo()
{
	if (!CanRedo())
	{
		return false;
	}
	UE::Headless::FTransaction* Transaction = UndoBuffer[UndoBuffer.Num() - UndoCount];
	--UndoCount;
	ApplyUndoRedo(*Transaction);
	return true;
}

FText UTransBuffer::GetTransactionTitle(int32 Index) const
{
	return UndoBuffer.IsValidIndex(Index) ? UndoBuffer[Index]->GetTitle() : FText();
}

FText UTransBuffer::GetOpenTransactionTitle() const
{
	return ActiveCount > 0 ? UndoBuffer.Last()->GetTitle() : FText();
}

int32 UTransBuffer::GetQueueLength() const
{
	return UndoBuffer.Num();
}

int32 UTransBuffer::GetUndoCount() const
{
	return UndoCount;
}

bool UTransBuffer::IsActive()
{
	return ActiveCount > 0;
}

void UTransBuffer::ApplyUndoRedo(UE::Headless::FTransaction& Transaction)
{
	const FTransactionContext Context = Transaction.GetContext();
	TransactionStateChangedDelegate.Broadcast(Context, ETransactionStateEventType::UndoRedoStarted);
	GIsTransacting = true;
	Transaction.Apply();
	GIsTransacting = false;
	TransactionStateChangedDelegate.Broadcast(Context, ETransactionStateEventType::UndoRedoFinalized);
}
