#include "Serialization/Archive.h"

FArchive& operator<<(FArchive& Ar, FString& Value)
{
	TArray<TCHAR>& Chars = Value.GetCharArray();
	Ar << Chars;
	if (Ar.IsLoading() && Chars.Num() > 0 && Chars.Last() != TEXT('\0'))
	{
		Ar.SetError();
		Value.Empty();
	}
	return Ar;
}

FArchive& operator<<(FArchive& Ar, FName& Value)
{
	FString Text = Ar.IsSaving() ? (Value.IsNone() ? FString() : Value.ToString()) : FString();
	Ar << Text;
	if (Ar.IsLoading())
	{
		Value = Text.IsEmpty() ? FName() : FName(Text);
	}
	return Ar;
}
