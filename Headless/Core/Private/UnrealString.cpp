#include "Containers/UnrealString.h"

#include "Containers/StringConv.h"
#include "StringFormat.h"

namespace
{
	TCHAR ToLowerAscii(TCHAR Char)
	{
		return (Char >= TEXT('A') && Char <= TEXT('Z')) ? (TCHAR)(Char + 32) : Char;
	}

	TCHAR ToUpperAscii(TCHAR Char)
	{
		return (Char >= TEXT('a') && Char <= TEXT('z')) ? (TCHAR)(Char - 32) : Char;
	}

	bool CharsEqual(const TCHAR* A, const TCHAR* B, int32 Count, ESearchCase::Type SearchCase)
	{
		for (int32 Index = 0; Index < Count; ++Index)
		{
			const TCHAR CharA = SearchCase == ESearchCase::IgnoreCase ? ToLowerAscii(A[Index]) : A[Index];
			const TCHAR CharB = SearchCase == ESearchCase::IgnoreCase ? ToLowerAscii(B[Index]) : B[Index];
			if (CharA != CharB)
			{
				return false;
			}
		}
		return true;
	}
}

FString::FString(const TCHAR* Str)
{
	if (Str && *Str)
	{
		Append(Str, FCString::Strlen(Str));
	}
}

FString::FString(const ANSICHAR* Str)
{
	if (Str && *Str)
	{
		*this = ConstructFromPtrSize(Str, FCStringAnsi::Strlen(Str));
	}
}

FString::FString(const UTF8CHAR* Str)
{
	if (Str && *Str)
	{
		const FUTF8ToTCHAR Converted(Str);
		Append(Converted.Get(), Converted.Length());
	}
}

FString::FString(FStringView View)
{
	Append(View.GetData(), View.Len());
}

FString& FString::operator=(const TCHAR* Str)
{
	FString Copy(Str);
	*this = MoveTemp(Copy);
	return *this;
}

void FString::Empty(int32 Slack)
{
	Data.Empty(Slack ? Slack + 1 : 0);
}

void FString::Reset(int32 NewReservedSize)
{
	Data.Reset(NewReservedSize ? NewReservedSize + 1 : 0);
}

void FString::Reserve(int32 CharacterCount)
{
	Data.Reserve(CharacterCount + 1);
}

FString& FString::Append(const TCHAR* Str, int32 Count)
{
	if (!Str || Count <= 0)
	{
		return *this;
	}
	if (Data.Num() == 0)
	{
		Data.Reserve(Count + 1);
		Data.Append(Str, Count);
		Data.Add(TEXT('\0'));
		return *this;
	}
	if (Str >= Data.GetData() && Str < Data.GetData() + Data.Num())
	{
		const FString Copy = ConstructFromPtrSize(Str, Count);
		return Append(*Copy, Count);
	}
	Data.RemoveAt(Data.Num() - 1);
	Data.Append(Str, Count);
	Data.Add(TEXT('\0'));
	return *this;
}

FString& FString::Append(const TCHAR* Str)
{
	return Str ? Append(Str, FCString::Strlen(Str)) : *this;
}

FString& FString::Append(const FString& Str)
{
	return Append(*Str, Str.Len());
}

FString& FString::Append(FStringView Str)
{
	return Append(Str.GetData(), Str.Len());
}

FString& FString::AppendChar(TCHAR InChar)
{
	if (InChar == 0)
	{
		return *this;
	}
	return Append(&InChar, 1);
}

void FString::PathAppend(const TCHAR* Str, int32 StrLength)
{
	const int32 StrLen = Str ? StrLength : 0;
	if (Len() > 0 && (*this)[Len() - 1] != TEXT('/') && (StrLen == 0 || Str[0] != TEXT('/')))
	{
		AppendChar(TEXT('/'));
	}
	Append(Str, StrLen);
}

bool FString::Equals(const FString& Other, ESearchCase::Type SearchCase) const
{
	return Len() == Other.Len() && CharsEqual(**this, *Other, Len(), SearchCase);
}

int32 FString::Compare(const FString& Other, ESearchCase::Type SearchCase) const
{
	return SearchCase == ESearchCase::CaseSensitive ? FCString::Strcmp(**this, *Other) : FCString::Stricmp(**this, *Other);
}

bool FString::StartsWith(const TCHAR* InPrefix, ESearchCase::Type SearchCase) const
{
	return InPrefix && StartsWith(InPrefix, FCString::Strlen(InPrefix), SearchCase);
}

bool FString::StartsWith(const FString& InPrefix, ESearchCase::Type SearchCase) const
{
	return StartsWith(*InPrefix, InPrefix.Len(), SearchCase);
}

bool FString::StartsWith(const TCHAR* InPrefix, int32 InPrefixLen, ESearchCase::Type SearchCase) const
{
	return InPrefixLen > 0 && InPrefixLen <= Len() && CharsEqual(**this, InPrefix, InPrefixLen, SearchCase);
}

bool FString::EndsWith(const TCHAR* InSuffix, ESearchCase::Type SearchCase) const
{
	return InSuffix && EndsWith(InSuffix, FCString::Strlen(InSuffix), SearchCase);
}

bool FString::EndsWith(const FString& InSuffix, ESearchCase::Type SearchCase) const
{
	return EndsWith(*InSuffix, InSuffix.Len(), SearchCase);
}

bool FString::EndsWith(const TCHAR* InSuffix, int32 InSuffixLen, ESearchCase::Type SearchCase) const
{
	return InSuffixLen > 0 && InSuffixLen <= Len() && CharsEqual(**this + Len() - InSuffixLen, InSuffix, InSuffixLen, SearchCase);
}

int32 FString::Find(const TCHAR* SubStr, ESearchCase::Type SearchCase, ESearchDir::Type SearchDir, int32 StartPosition) const
{
	if (!SubStr)
	{
		return INDEX_NONE;
	}
	const int32 SubLen = FCString::Strlen(SubStr);
	const int32 MyLen = Len();
	if (SearchDir == ESearchDir::FromStart)
	{
		const int32 First = StartPosition == INDEX_NONE ? 0 : (StartPosition < 0 ? 0 : StartPosition);
		for (int32 Index = First; Index + SubLen <= MyLen; ++Index)
		{
			if (CharsEqual(**this + Index, SubStr, SubLen, SearchCase))
			{
				return Index;
			}
		}
	}
	else
	{
		int32 Last = MyLen - SubLen;
		if (StartPosition != INDEX_NONE && StartPosition - SubLen < Last)
		{
			Last = StartPosition - SubLen;
		}
		for (int32 Index = Last; Index >= 0; --Index)
		{
			if (CharsEqual(**this + Index, SubStr, SubLen, SearchCase))
			{
				return Index;
			}
		}
	}
	return INDEX_NONE;
}

bool FString::FindChar(TCHAR InChar, int32& Index) const
{
	for (int32 Position = 0; Position < Len(); ++Position)
	{
		if (Data[Position] == InChar)
		{
			Index = Position;
			return true;
		}
	}
	Index = INDEX_NONE;
	return false;
}

bool FString::FindLastChar(TCHAR InChar, int32& Index) const
{
	for (int32 Position = Len() - 1; Position >= 0; --Position)
	{
		if (Data[Position] == InChar)
		{
			Index = Position;
			return true;
		}
	}
	Index = INDEX_NONE;
	return false;
}

FString FString::Left(int32 Count) const
{
	const int32 Clamped = Count < 0 ? 0 : (Count > Len() ? Len() : Count);
	return ConstructFromPtrSize(**this, Clamped);
}

FString FString::LeftChop(int32 Count) const
{
	return Left(Len() - (Count < 0 ? 0 : Count));
}

FString FString::Right(int32 Count) const
{
	const int32 Clamped = Count < 0 ? 0 : (Count > Len() ? Len() : Count);
	return ConstructFromPtrSize(**this + Len() - Clamped, Clamped);
}

FString FString::RightChop(int32 Count) const
{
	const int32 Clamped = Count < 0 ? 0 : (Count > Len() ? Len() : Count);
	return ConstructFromPtrSize(**this + Clamped, Len() - Clamped);
}

FString FString::Mid(int32 Start, int32 Count) const
{
	const int32 First = Start < 0 ? 0 : (Start > Len() ? Len() : Start);
	const int64 Wanted = (int64)Count + (Start < 0 ? Start : 0);
	const int32 Available = Len() - First;
	const int32 Taken = Wanted < 0 ? 0 : (Wanted > Available ? Available : (int32)Wanted);
	return ConstructFromPtrSize(**this + First, Taken);
}

FString FString::ToLower() const
{
	FString Result(*this);
	for (int32 Index = 0; Index < Result.Len(); ++Index)
	{
		Result.Data[Index] = ToLowerAscii(Result.Data[Index]);
	}
	return Result;
}

FString FString::ToUpper() const
{
	FString Result(*this);
	for (int32 Index = 0; Index < Result.Len(); ++Index)
	{
		Result.Data[Index] = ToUpperAscii(Result.Data[Index]);
	}
	return Result;
}

FString FString::TrimStartAndEnd() const
{
	auto IsWhite = [](TCHAR Char) { return Char == TEXT(' ') || Char == TEXT('\t') || Char == TEXT('\r') || Char == TEXT('\n'); };
	int32 First = 0;
	int32 Last = Len();
	while (First < Last && IsWhite(Data[First]))
	{
		++First;
	}
	while (Last > First && IsWhite(Data[Last - 1]))
	{
		--Last;
	}
	return Mid(First, Last - First);
}

FString FString::Replace(const TCHAR* From, const TCHAR* To, ESearchCase::Type SearchCase) const
{
	const int32 FromLen = From ? FCString::Strlen(From) : 0;
	if (FromLen == 0)
	{
		return *this;
	}
	FString Result;
	int32 Position = 0;
	while (Position < Len())
	{
		const int32 Found = Find(From, SearchCase, ESearchDir::FromStart, Position);
		if (Found == INDEX_NONE)
		{
			break;
		}
		Result.Append(**this + Position, Found - Position);
		Result.Append(To);
		Position = Found + FromLen;
	}
	Result.Append(**this + Position, Len() - Position);
	return Result;
}

bool FString::Split(const FString& InS, FString* LeftS, FString* RightS, ESearchCase::Type SearchCase, ESearchDir::Type SearchDir) const
{
	const int32 Found = Find(*InS, SearchCase, SearchDir);
	if (Found == INDEX_NONE)
	{
		return false;
	}
	if (LeftS)
	{
		*LeftS = Left(Found);
	}
	if (RightS)
	{
		*RightS = Mid(Found + InS.Len());
	}
	return true;
}

int32 FString::ParseIntoArray(TArray<FString>& OutArray, const TCHAR* Delimiter, bool bCullEmpty) const
{
	OutArray.Reset();
	const int32 DelimiterLen = Delimiter ? FCString::Strlen(Delimiter) : 0;
	if (DelimiterLen == 0)
	{
		if (!bCullEmpty || !IsEmpty())
		{
			OutArray.Add(*this);
		}
		return OutArray.Num();
	}
	int32 Position = 0;
	while (true)
	{
		const int32 Found = Find(Delimiter, ESearchCase::CaseSensitive, ESearchDir::FromStart, Position);
		const int32 End = Found == INDEX_NONE ? Len() : Found;
		FString Piece = Mid(Position, End - Position);
		if (!bCullEmpty || !Piece.IsEmpty())
		{
			OutArray.Add(MoveTemp(Piece));
		}
		if (Found == INDEX_NONE)
		{
			break;
		}
		Position = Found + DelimiterLen;
	}
	return OutArray.Num();
}

FString FString::ConstructFromPtrSize(const TCHAR* Str, int32 Size)
{
	FString Result;
	if (Str && Size > 0)
	{
		Result.Append(Str, Size);
	}
	return Result;
}

// ANSI text widens byte by byte; a byte outside ASCII has no meaning without a code page and becomes '?'.
FString FString::ConstructFromPtrSize(const ANSICHAR* Str, int32 Size)
{
	FString Result;
	if (Str && Size > 0)
	{
		Result.Reserve(Size);
		for (int32 Index = 0; Index < Size && Str[Index]; ++Index)
		{
			const unsigned char Byte = (unsigned char)Str[Index];
			Result.AppendChar(Byte < 128 ? (TCHAR)Byte : TEXT('?'));
		}
	}
	return Result;
}

FString FString::ConstructFromPtrSize(const UTF8CHAR* Str, int32 Size)
{
	FString Result;
	if (Str && Size > 0)
	{
		const FUTF8ToTCHAR Converted(Str, Size);
		Result.Append(Converted.Get(), Converted.Length());
	}
	return Result;
}

FString FString::FromInt(int32 Num)
{
	return Printf(TEXT("%d"), Num);
}

FString FString::Join(const TArray<FString>& Items, const TCHAR* Separator)
{
	FString Result;
	for (int32 Index = 0; Index < Items.Num(); ++Index)
	{
		if (Index > 0)
		{
			Result.Append(Separator);
		}
		Result.Append(Items[Index]);
	}
	return Result;
}

FString FString::ConcatFF(const FString& Lhs, const FString& Rhs)
{
	FString Result;
	Result.Reserve(Lhs.Len() + Rhs.Len());
	Result.Append(Lhs);
	Result.Append(Rhs);
	return Result;
}

FString FString::ConcatFC(const FString& Lhs, const TCHAR* Rhs)
{
	FString Result(Lhs);
	Result.Append(Rhs);
	return Result;
}

FString FString::ConcatCF(const TCHAR* Lhs, const FString& Rhs)
{
	FString Result(Lhs);
	Result.Append(Rhs);
	return Result;
}

FString VARARGS FString::PrintfImpl(const TCHAR* Fmt, ...)
{
	va_list Args;
	va_start(Args, Fmt);
	FString Result = UE::Core::Private::FormatV(Fmt, Args);
	va_end(Args);
	return Result;
}

void VARARGS FString::AppendfImpl(FString& AppendToMe, const TCHAR* Fmt, ...)
{
	va_list Args;
	va_start(Args, Fmt);
	AppendToMe.Append(UE::Core::Private::FormatV(Fmt, Args));
	va_end(Args);
}

uint32 GetTypeHash(const FString& Str)
{
	// FNV-1a over the lower-cased characters, so that strings equal under operator== hash alike.
	uint32 Hash = 2166136261u;
	for (const TCHAR Char : Str)
	{
		Hash = (Hash ^ (uint32)ToLowerAscii(Char)) * 16777619u;
	}
	return Hash;
}

FString LexToString(int32 Value)
{
	return FString::Printf(TEXT("%d"), Value);
}

FString LexToString(bool bValue)
{
	return bValue ? FString(TEXT("true")) : FString(TEXT("false"));
}
