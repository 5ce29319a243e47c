// The editor: transactions, undo and redo, and the tick that finishes asynchronous work.
#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"
#include "UObject/ObjectMacros.h"
#include "UObject/ObjectPtr.h"

class UEditorEngine : public UObject
{
	DECLARE_CLASS(UEditorEngine, UObject, CLASS_None, CASTCLASS_None, TEXT("/Script/UnrealEd"), UNREALED_API)

public:
	// The transaction system; the editor's is a UTransBuffer.
	TObjectPtr<class UTransactor> Trans;

	UNREALED_API int32 BeginTransaction(const TCHAR* TransactionContext, const FText& Description, UObject* PrimaryObject);
	UNREALED_API int32 BeginTransaction(const FText& Description);
	UNREALED_API int32 EndTransaction();
	UNREALED_API void CancelTransaction(int32 Index);
	UNREALED_API bool UndoTransaction(bool bCanRedo = true);
	UNREALED_API bool RedoTransaction();
	// True while any transaction, of any caller, is open.
	[[nodiscard]] UNREALED_API bool IsTransactionActive() const;
	[[nodiscard]] UNREALED_API FText GetTransactionName() const;
	[[nodiscard]] UNREALED_API bool CanTransact();

	// One editor frame: finishes the asynchronous static mesh builds that are ready.
	UNREALED_API void Tick(float DeltaSeconds, bool bIdleMode);
};
