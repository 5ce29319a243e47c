// The editor's undo buffer: a list of transactions and the position that Undo and Redo move.
#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"
#include "UObject/ObjectMacros.h"

namespace UE::Headless
{
	class FTransaction;
}

class UTransactor : public UObject
{
	DECLARE_CLASS(UTransactor, UObject, CLASS_Abstract, CASTCLASS_None, TEXT("/Script/UnrealEd"), UNREALED_API)
};

class UTransBuffer : public UTransactor
{
	DECLARE_CLASS(UTransBuffer, UTransactor, CLASS_None, CASTCLASS_None, TEXT("/Script/UnrealEd"), UNREALED_API)

public:
	UNREALED_API UTransBuffer();
	UNREALED_API ~UTransBuffer() override;

	// Opens a transaction, or nests into the open one; returns the number that were open before.
	UNREALED_API int32 Begin(const TCHAR* SessionContext, const FText& Description);
	// Closes one level; the outermost close keeps the transaction unless it recorded nothing.
	UNREALED_API int32 End();
	// Throws the whole open transaction away (a nested start index cancels it entirely too). Objects keep
	// the state they have: nothing is reverted.
	UNREALED_API void Cancel(int32 StartIndex = 0);
	// Discards every transaction, open or not: nothing can be undone or redone afterwards.
	UNREALED_API void Reset(const FText& Reason);
	UNREALED_API bool Undo(bool bCanRedo = true);
	UNREALED_API bool Redo();

	[[nodiscard]] UNREALED_API bool CanUndo(FText* Text = nullptr) const;
	[[nodiscard]] UNREALED_API bool CanRedo(FText* Text = nullptr) const;
	[[nodiscard]] bool IsActive() const { return ActiveCount > 0; }
	[[nodiscard]] int32 GetActiveCount() const { return ActiveCount; }
	[[nodiscard]] int32 GetQueueLength() const { return UndoBuffer.Num(); }
	[[nodiscard]] int32 GetUndoCount() const { return UndoCount; }
	// The title of the transaction at Index of the queue.
	[[nodiscard]] UNREALED_API FText GetTransactionTitle(int32 Index) const;
	[[nodiscard]] UNREALED_API FText GetOpenTransactionTitle() const;

private:
	TArray<UE::Headless::FTransaction*> UndoBuffer;
	TArray<UE::Headless::FTransaction*> RemovedTransactions;
	int32 UndoCount = 0;
	int32 PreviousUndoCount = 0;
	int32 ActiveCount = 0;
};
