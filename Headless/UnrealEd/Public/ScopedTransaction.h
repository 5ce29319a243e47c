// A transaction that stays open while the scope lives.
#pragma once

#include "CoreMinimal.h"

class UObject;

class FScopedTransaction
{
public:
	UE_NODISCARD_CTOR UNREALED_API FScopedTransaction(const FText& SessionName, const bool bShouldActuallyTransact = true);
	UE_NODISCARD_CTOR UNREALED_API FScopedTransaction(const TCHAR* TransactionContext, const FText& SessionName, UObject* PrimaryObject,
		const bool bShouldActuallyTransact = true);
	UNREALED_API ~FScopedTransaction();

	FScopedTransaction(const FScopedTransaction&) = delete;
	FScopedTransaction& operator=(const FScopedTransaction&) = delete;

	// Throws the transaction's record away; objects keep the state they have.
	UNREALED_API void Cancel();
	[[nodiscard]] UNREALED_API bool IsOutstanding() const;

private:
	void Construct(const TCHAR* TransactionContext, const FText& SessionName, UObject* PrimaryObject, const bool bShouldActuallyTransact);

	int32 Index = -1;
};
