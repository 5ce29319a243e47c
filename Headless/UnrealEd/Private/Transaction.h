// One transaction: the state of every object it touched, as it was before the first change.
#pragma once

#include "CoreMinimal.h"
#include "Misc/ITransaction.h"

class UObject;

namespace UE::Headless
{
	class FTransaction : public ITransaction
	{
	public:
		FTransaction(const TCHAR* InContext, const FText& InTitle);

		void SaveObject(UObject* Object) override;

		// Swaps every recorded object's state with the stored one, newest record first: applied once it undoes
		// the transaction, applied again it redoes it.
		void Apply();

		// Compares every recorded object with what was saved of it, when the outermost level closes.
		void Finalize();

		// A transaction whose objects did not change leaves no undo step.
		[[nodiscard]] bool IsTransient() const { return !bHasChanges; }
		[[nodiscard]] const FText& GetTitle() const { return Title; }
		[[nodiscard]] FTransactionContext GetContext() const { return FTransactionContext(Title, *Context, nullptr); }

	private:
		struct FObjectRecord
		{
			UObject* Object = nullptr;
			TArray<uint8> State;
			// The engine's records keep whether the object was garbage; undoing a removal restores it.
			bool bWasGarbage = false;
		};

		FString Context;
		FText Title;
		TArray<FObjectRecord> Records;
		bool bHasChanges = false;
	};
}
