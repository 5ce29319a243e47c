#include "Transaction.h"

#include "Serialization/MemoryReader.h"
#include "Serialization/MemoryWriter.h"
#include "UObject/Object.h"

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
	FMemoryWriter Writer(Record.State);
	Object->Serialize(Writer);
}

void UE::Headless::FTransaction::Apply()
{
	for (int32 Index = Records.Num() - 1; Index >= 0; --Index)
	{
		Records[Index].Object->PreEditUndo();
	}
	for (int32 Index = Records.Num() - 1; Index >= 0; --Index)
	{
		FObjectRecord& Record = Records[Index];
		TArray<uint8> Current;
		FMemoryWriter Writer(Current);
		Record.Object->Serialize(Writer);
		const bool bCurrentlyGarbage = Record.Object->HasAnyInternalFlags(EInternalObjectFlags::Garbage);

		FMemoryReader Reader(Record.State);
		Record.Object->Serialize(Reader);
		if (Record.bWasGarbage)
		{
			Record.Object->MarkAsGarbage();
		}
		else
		{
			Record.Object->ClearGarbage();
		}
		Record.State = MoveTemp(Current);
		Record.bWasGarbage = bCurrentlyGarbage;
	}
	for (int32 Index = Records.Num() - 1; Index >= 0; --Index)
	{
		Records[Index].Object->PostEditUndo();
	}
}
