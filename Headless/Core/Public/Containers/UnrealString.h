// FString: the engine's wide string, a TArray<TCHAR> holding the characters and a terminating NUL.
#pragma once

#include "Containers/Array.h"
#include "Containers/StringView.h"
#include "HAL/Platform.h"
#include "Misc/CString.h"
#include "String/FormatStringSan.h"

class FString
{
public:
	using ElementType = TCHAR;
	using FmtCharType = TCHAR;

	FString() = default;
	FString(const FString&) = default;
	FString(FString&&) noexcept = default;
	FString& operator=(const FString&) = default;
	FString& operator=(FString&&) noexcept = default;

	CORE_API FString(const TCHAR* Str);
	CORE_API FString(const ANSICHAR* Str);
	CORE_API FString(const UTF8CHAR* Str);
	CORE_API explicit FString(FStringView View);
	CORE_API FString& operator=(const TCHAR* Str);

	[[nodiscard]] int32 Len() const { return Data.Num() ? Data.Num() - 1 : 0; }
	[[nodiscard]] bool IsEmpty() const { return Data.Num() <= 1; }
	[[nodiscard]] const TCHAR* operator*() const { return Data.Num() ? Data.GetData() : TEXT(""); }
	[[nodiscard]] TArray<TCHAR>& GetCharArray() { return Data; }
	[[nodiscard]] const TArray<TCHAR>& GetCharArray() const { return Data; }
	[[nodiscard]] TCHAR& operator[](int32 Index) { return Data[Index]; }
	[[nodiscard]] const TCHAR& operator[](int32 Index) const { return Data[Index]; }
	[[nodiscard]] bool IsValidIndex(int32 Index) const { return Index >= 0 && Index < Len(); }

	CORE_API void Empty(int32 Slack = 0);
	CORE_API void Reset(int32 NewReservedSize = 0);
	CORE_API void Reserve(int32 CharacterCount);

	CORE_API FString& Append(const TCHAR* Str, int32 Count);
	CORE_API FString& Append(const TCHAR* Str);
	CORE_API FString& Append(const FString& Str);
	CORE_API FString& Append(FStringView Str);
	CORE_API FString& AppendChar(TCHAR InChar);
	FString& operator+=(const TCHAR* Str) { return Append(Str); }
	FString& operator+=(const FString& Str) { return Append(Str); }
	FString& operator+=(FStringView Str) { return Append(Str); }
	FString& operator+=(TCHAR InChar) { return AppendChar(InChar); }
	FString& operator/=(const TCHAR* Str)
	{
		PathAppend(Str, Str ? FCString::Strlen(Str) : 0);
		return *this;
	}
	CORE_API void PathAppend(const TCHAR* Str, int32 StrLength);

	[[nodiscard]] CORE_API bool Equals(const FString& Other, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const;
	[[nodiscard]] CORE_API int32 Compare(const FString& Other, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const;

	[[nodiscard]] CORE_API bool StartsWith(const TCHAR* InPrefix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	[[nodiscard]] CORE_API bool StartsWith(const FString& InPrefix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	[[nodiscard]] CORE_API bool StartsWith(const TCHAR* InPrefix, int32 InPrefixLen, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	[[nodiscard]] CORE_API bool EndsWith(const TCHAR* InSuffix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	[[nodiscard]] CORE_API bool EndsWith(const FString& InSuffix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	[[nodiscard]] CORE_API bool EndsWith(const TCHAR* InSuffix, int32 InSuffixLen, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;

	[[nodiscard]] CORE_API int32 Find(const TCHAR* SubStr, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase,
		ESearchDir::Type SearchDir = ESearchDir::FromStart, int32 StartPosition = INDEX_NONE) const;
	[[nodiscard]] int32 Find(const FString& SubStr, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase,
		ESearchDir::Type SearchDir = ESearchDir::FromStart, int32 StartPosition = INDEX_NONE) const
	{
		return Find(*SubStr, SearchCase, SearchDir, StartPosition);
	}
	[[nodiscard]] bool Contains(const TCHAR* SubStr, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const
	{
		return Find(SubStr, SearchCase) != INDEX_NONE;
	}
	[[nodiscard]] bool Contains(const FString& SubStr, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const
	{
		return Find(*SubStr, SearchCase) != INDEX_NONE;
	}

	CORE_API bool FindChar(TCHAR InChar, int32& Index) const;
	CORE_API bool FindLastChar(TCHAR InChar, int32& Index) const;

	template <typename Predicate>
	[[nodiscard]] int32 FindLastCharByPredicate(Predicate Pred, int32 Count) const
	{
		check(Count >= 0 && Count <= Len());
		for (int32 Index = Count - 1; Index >= 0; --Index)
		{
			if (Pred(Data[Index]))
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}

	template <typename Predicate>
	[[nodiscard]] int32 FindLastCharByPredicate(Predicate Pred) const
	{
		return FindLastCharByPredicate(Pred, Len());
	}

	[[nodiscard]] CORE_API FString Left(int32 Count) const;
	[[nodiscard]] CORE_API FString LeftChop(int32 Count) const;
	[[nodiscard]] CORE_API FString Right(int32 Count) const;
	[[nodiscard]] CORE_API FString RightChop(int32 Count) const;
	[[nodiscard]] CORE_API FString Mid(int32 Start, int32 Count = MAX_int32) const;
	[[nodiscard]] CORE_API FString ToLower() const;
	[[nodiscard]] CORE_API FString ToUpper() const;
	[[nodiscard]] CORE_API FString TrimStartAndEnd() const;
	[[nodiscard]] CORE_API FString Replace(const TCHAR* From, const TCHAR* To, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	CORE_API bool Split(const FString& InS, FString* LeftS, FString* RightS, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase,
		ESearchDir::Type SearchDir = ESearchDir::FromStart) const;
	CORE_API int32 ParseIntoArray(TArray<FString>& OutArray, const TCHAR* Delimiter, bool bCullEmpty = true) const;

	[[nodiscard]] static CORE_API FString ConstructFromPtrSize(const TCHAR* Str, int32 Size);
	[[nodiscard]] static CORE_API FString ConstructFromPtrSize(const ANSICHAR* Str, int32 Size);
	[[nodiscard]] static CORE_API FString ConstructFromPtrSize(const UTF8CHAR* Str, int32 Size);
	[[nodiscard]] static CORE_API FString FromInt(int32 Num);
	[[nodiscard]] static CORE_API FString Join(const TArray<FString>& Items, const TCHAR* Separator);

	// The format must be a character array whose conversions fit the arguments (checked when compiling).
	template <typename... Types>
	[[nodiscard]] static FString Printf(UE::Core::TCheckedFormatString<FmtCharType, Types...> Fmt, Types... Args)
	{
		return PrintfImpl((const ElementType*)Fmt.FormatString, Args...);
	}

	template <typename... Types>
	FString& Appendf(UE::Core::TCheckedFormatString<FmtCharType, Types...> Fmt, Types... Args)
	{
		AppendfImpl(*this, (const ElementType*)Fmt.FormatString, Args...);
		return *this;
	}

	// Case-insensitive, as the engine's FString comparison operators are.
	[[nodiscard]] friend bool operator==(const FString& Lhs, const FString& Rhs) { return Lhs.Equals(Rhs, ESearchCase::IgnoreCase); }
	[[nodiscard]] friend bool operator!=(const FString& Lhs, const FString& Rhs) { return !Lhs.Equals(Rhs, ESearchCase::IgnoreCase); }
	[[nodiscard]] friend bool operator==(const FString& Lhs, const TCHAR* Rhs) { return Lhs.Equals(FString(Rhs), ESearchCase::IgnoreCase); }
	[[nodiscard]] friend bool operator!=(const FString& Lhs, const TCHAR* Rhs) { return !(Lhs == Rhs); }
	[[nodiscard]] friend bool operator<(const FString& Lhs, const FString& Rhs) { return Lhs.Compare(Rhs, ESearchCase::IgnoreCase) < 0; }

	friend FString operator+(const FString& Lhs, const FString& Rhs) { return ConcatFF(Lhs, Rhs); }
	friend FString operator+(const FString& Lhs, const TCHAR* Rhs) { return ConcatFC(Lhs, Rhs); }
	friend FString operator+(const TCHAR* Lhs, const FString& Rhs) { return ConcatCF(Lhs, Rhs); }
	friend FString operator/(const FString& Lhs, const TCHAR* Rhs) { FString Result(Lhs); Result /= Rhs; return Result; }
	friend FString operator/(const FString& Lhs, const FString& Rhs) { FString Result(Lhs); Result /= *Rhs; return Result; }

	friend const TCHAR* GetData(const FString& Str) { return *Str; }
	friend int32 GetNum(const FString& Str) { return Str.Len(); }

	TCHAR* begin() { return Data.GetData(); }
	TCHAR* end() { return Data.GetData() + Len(); }
	const TCHAR* begin() const { return Data.GetData(); }
	const TCHAR* end() const { return Data.GetData() + Len(); }

private:
	// Helpers of the operators and of Printf; private in the engine, as here.
	[[nodiscard]] static CORE_API FString ConcatFF(const FString& Lhs, const FString& Rhs);
	[[nodiscard]] static CORE_API FString ConcatFC(const FString& Lhs, const TCHAR* Rhs);
	[[nodiscard]] static CORE_API FString ConcatCF(const TCHAR* Lhs, const FString& Rhs);
	static CORE_API FString VARARGS PrintfImpl(const TCHAR* Fmt, ...);
	static CORE_API void VARARGS AppendfImpl(FString& AppendToMe, const TCHAR* Fmt, ...);

	TArray<TCHAR> Data;
};

static_assert(sizeof(FString) == 16, "FString is a TArray: pointer, count and capacity");

// An FString handed to a %s conversion must be dereferenced first.
template <>
struct UE::Core::Private::FormatStringSan::TIsEngineString<FString>
{
	static constexpr bool Value = true;
};

CORE_API uint32 GetTypeHash(const FString& Str);
CORE_API FString LexToString(int32 Value);
CORE_API FString LexToString(bool bValue);
