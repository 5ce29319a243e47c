// The editor's undo buffer: a list of transactions and the position that Undo and Redo move.
#pragma once

#include "CoreMinimal.h"
#include "Editor/Transactor.h"
#include "Misc/ITransaction.h"
#include "UObject/ObjectMacros.h"

namespace UE::Headless
{
	class FTransaction;
	struct FTransBufferAccess;
}

class UTransBuffer : public UTransactor
{
	DECLARE_CLASS(UTransBuffer, UTransactor, CLASS_None, CASTCLASS_None, TEXT("/Script/UnrealEd"), UNREALED_API)

public:
	UNREALED_API UTransBuffer();
	UNREALED_API ~UTransBuffer() override;

	UNREALED_API int32 Begin(const TCHAR* SessionContext, const FText& Description) override;
	// The outermost close keeps the transaction unless it recorded nothing.
	UNREALED_API int32 End() override;
	// A nested start index cancels the whole open transaction too.
	UNREALED_API void Cancel(int32 StartIndex = 0) override;
	UNREALED_API void Reset(const FText& Reason) override;
	UNREALED_API bool Undo(bool bCanRedo = true) override;
	UNREALED_API bool Redo() override;
	UNREALED_API bool CanUndo(FText* Text = nullptr) override;
	UNREALED_API bool CanRedo(FText* Text = nullptr) override;
	[[nodiscard]] UNREALED_API int32 GetQueueLength() const override;
	[[nodiscard]] UNREALED_API int32 GetUndoCount() const override;
	UNREALED_API bool IsActive() override;

	DECLARE_EVENT_TwoParams(UTransBuffer, FOnTransactorTransactionStateChanged, const FTransactionContext& /*TransactionContext*/,
		ETransactionStateEventType /*TransactionState*/);
	// Announces a transaction's start, cancel and finalisation, and each undo and redo.
	FOnTransactorTransactionStateChanged& OnTransactionStateChanged() { return TransactionStateChangedDelegate; }

private:
	void ApplyUndoRedo(UE::Headless::FTransaction& Transaction);

	friend class UEditorEngine;
	friend struct UE::Headless::FTransBufferAccess;

	[[nodiscard]] int32 GetActiveCount() const { return ActiveCount; }
	// The title of the transaction at Index of the queue.
	[[nodiscard]] FText GetTransactionTitle(int32 Index) const;
	[[nodiscard]] FText GetOpenTransactionTitle() const;

	TArray<UE::Headless::FTransaction*> UndoBuffer;
	TArray<UE::Headless::FTransaction*> RemovedTransactions;
	int32 UndoCount = 0;
	int32 PreviousUndoCount = 0;
	int32 ActiveCount = 0;
	FOnTransactorTransactionStateChanged TransactionStateChangedDelegate;
	// Why the buffer was last emptied; the text of CanUndo names it when there is nothing to undo.
	FText ResetReason;
};
