// The transaction that Modify records into; the editor's transaction buffer provides it.
#pragma once

#include "Containers/UnrealString.h"
#include "HAL/Platform.h"
#include "Internationalization/Text.h"

class UObject;

// What a transaction is, as its listeners are told.
struct FTransactionContext
{
	FTransactionContext() = default;
	FTransactionContext(const FText& InTitle, const TCHAR* InContext, UObject* InPrimaryObject)
		: Title(InTitle)
		, Context(InContext ? InContext : TEXT(""))
		, PrimaryObject(InPrimaryObject)
	{
	}

	FText Title;
	FString Context;
	UObject* PrimaryObject = nullptr;
};

// The moments of a transaction's life that the transaction system announces.
enum class ETransactionStateEventType : uint8
{
	TransactionStarted,
	TransactionCanceled,
	PreTransactionFinalized,
	TransactionFinalized,
	UndoRedoStarted,
	UndoRedoFinalized,
};

class ITransaction
{
public:
	virtual ~ITransaction() = default;

	// Records the object's state before its first change in this transaction.
	virtual void SaveObject(UObject* Object) = 0;
};
