// FName: an interned, case-insensitive name with an optional number suffix ("Foo_0" is Foo with number 1).
#pragma once

#include "Containers/StringView.h"
#include "Containers/UnrealString.h"
#include "HAL/Platform.h"

enum EName : uint32
{
	NAME_None = 0,
};

enum EFindName
{
	FNAME_Find,
	FNAME_Add,
};

#define NAME_NO_NUMBER_INTERNAL 0
#define NAME_EXTERNAL_TO_INTERNAL(x) ((x) + 1)
#define NAME_INTERNAL_TO_EXTERNAL(x) ((x) - 1)

// The characters an object or package name may not contain.
#define INVALID_OBJECTNAME_CHARACTERS TEXT("\"' ,/.:|&!~\n\r\t@#(){}[]=;^%$`")
#define INVALID_LONGPACKAGE_CHARACTERS TEXT("\\:*?\"<>|' ,.&!~\n\r\t@#")

class FName
{
public:
	FName() = default;
	FName(EName) {}
	CORE_API FName(const TCHAR* Name, EFindName FindType = FNAME_Add);
	CORE_API FName(const ANSICHAR* Name, EFindName FindType = FNAME_Add);
	CORE_API explicit FName(FStringView Name, EFindName FindType = FNAME_Add);
	CORE_API FName(const FName& Other, int32 InNumber);

	[[nodiscard]] CORE_API FString ToString() const;
	CORE_API void ToString(FString& Out) const;
	[[nodiscard]] CORE_API FString GetPlainNameString() const;
	[[nodiscard]] bool IsNone() const { return ComparisonIndex == 0 && Number == NAME_NO_NUMBER_INTERNAL; }
	[[nodiscard]] int32 GetNumber() const { return Number; }
	void SetNumber(int32 InNumber) { Number = InNumber; }
	[[nodiscard]] uint32 GetComparisonIndex() const { return ComparisonIndex; }
	[[nodiscard]] uint32 GetDisplayIndex() const { return DisplayIndex; }

	// Compares the plain names ignoring case, and the numbers.
	[[nodiscard]] bool operator==(const FName& Other) const { return ComparisonIndex == Other.ComparisonIndex && Number == Other.Number; }
	[[nodiscard]] bool operator!=(const FName& Other) const { return !(*this == Other); }
	[[nodiscard]] bool operator==(EName Other) const { return Other == NAME_None && IsNone(); }
	[[nodiscard]] bool IsEqual(const FName& Other) const { return *this == Other; }
	[[nodiscard]] CORE_API bool LexicalLess(const FName& Other) const;
	[[nodiscard]] bool FastLess(const FName& Other) const
	{
		return ComparisonIndex != Other.ComparisonIndex ? ComparisonIndex < Other.ComparisonIndex : Number < Other.Number;
	}

private:
	void Init(const TCHAR* Name, int32 Length, EFindName FindType);

	uint32 ComparisonIndex = 0;
	uint32 DisplayIndex = 0;
	int32 Number = NAME_NO_NUMBER_INTERNAL;
};

inline uint32 GetTypeHash(const FName& Name)
{
	return Name.GetComparisonIndex() * 31u + (uint32)Name.GetNumber();
}

CORE_API FString LexToString(const FName& Name);
