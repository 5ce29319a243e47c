#include "ScopedTransaction.h"

#include "CoreGlobals.h"
#include "Editor.h"

FScopedTransaction::FScopedTransaction(const FText& SessionName, const bool bShouldActuallyTransact)
{
	Construct(nullptr, SessionName, nullptr, bShouldActuallyTransact);
}

FScopedTransaction::FScopedTransaction(const TCHAR* TransactionContext, const FText& SessionName, UObject* PrimaryObject, const bool bShouldActuallyTransact)
{
	Construct(TransactionContext, SessionName, PrimaryObject, bShouldActuallyTransact);
}

void FScopedTransaction::Construct(const TCHAR* TransactionContext, const FText& SessionName, UObject* PrimaryObject, const bool bShouldActuallyTransact)
{
	if (bShouldActuallyTransact && GEditor && GEditor->CanTransact() && ensure(!GIsTransacting))
	{
		Index = GEditor->BeginTransaction(TransactionContext, SessionName, PrimaryObject);
	}
	else
	{
		Index = -1;
	}
}

FScopedTransaction::~FScopedTransaction()
{
	if (Index >= 0 && GEditor)
	{
		GEditor->EndTransaction();
	}
}

void FScopedTransaction::Cancel()
{
	if (Index >= 0)
	{
		if (GEditor)
		{
			GEditor->CancelTransaction(Index);
		}
		Index = -1;
	}
}

bool FScopedTransaction::IsOutstanding() const
{
	return Index >= 0;
}
