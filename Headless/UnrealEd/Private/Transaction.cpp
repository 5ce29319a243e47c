#include "Transaction.h"

#include "Serialization/MemoryReader.h"
#include "Serialization/MemoryWriter.h"
#include "UObject/Object.h"

namespace
{
	TArray<uint8> SerializeState(UObject& Object)
	{
		TArray<uint8> State;
		FMemoryWriter Writer(State);
		Object.Serialize(Writer);
		return State;
	}
}

UE::Headless::FTransaction::FTransaction(const TCHAR* InContext, const FText& InTitle)
	: Context(InContext ? InContext : TEXT(""))
	, Title(InTitle)
{
}

void UE::Headless::FTransaction::SaveObject(UObject* Object)
{
	if (!Object || Records.ContainsByPredicate([Object](const FObjectRecord& Record) { return Record.Object == Object; }))
	{
		return;
	}
	FObjectRecord& Record = Records.AddDefaulted_GetRef();
	Record.Object = Object;
	Record.bWasGarbage = Object->HasAnyInternalFlags(EInternalObjectFlags::Garbage);
	Record.State = SerializeState(*Object);
}

void UE::Headless::FTransaction::Finalize()
{
	// As the engine's records, a record counts only if the object differs from what was saved of it.
	bHasChanges = false;
	for (FObjectRecord& Record : Records)
	{
		bHasChanges |= Record.bWasGarbage != Record.Object->HasAnyInternalFlags(EInternalObjectFlags::Garbage)
			|| Record.State != SerializeState(*Record.Object);
	}
}

void UE::Headless::FTransaction::Apply()
{
	for (int32 Index = Records.Num() - 1; Index >= 0; --Index)
	{
		Records[Index].Object->PreEditUndo();
	}

	// Every object is garbage or alive as the other side of the transaction has it before any state is read
	// back: the states refer to objects by path, and a path finds no garbage. The engine also applies the
	// garbage changes of all records first.
	TArray<TArray<uint8>> Current;
	Current.Reserve(Records.Num());
	for (FObjectRecord& Record : Records)
	{
		Current.Add(SerializeState(*Record.Object));
	}
	TArray<bool> CurrentlyGarbage;
	for (FObjectRecord& Record : Records)
	{
		CurrentlyGarbage.Add(Record.Object->HasAnyInternalFlags(EInternalObjectFlags::Garbage));
		if (Record.bWasGarbage)
		{
			Record.Object->MarkAsGarbage();
		}
		else
		{
			Record.Object->ClearGarbage();
		}
	}
	for (int32 Index = Records.Num() - 1; Index >= 0; --Index)
	{
		FObjectRecord& Record = Records[Index];
		FMemoryReader Reader(Record.State);
		Record.Object->Serialize(Reader);
		Record.State = MoveTemp(Current[Index]);
		Record.bWasGarbage = CurrentlyGarbage[Index];
	}

	for (int32 Index = Records.Num() - 1; Index >= 0; --Index)
	{
		Records[Index].Object->PostEditUndo();
	}
}
