#include "UObject/NameTypes.h"

#include "Containers/StringConv.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace
{
	// One table for the process: every spelling gets a display index, every case-folded spelling a
	// comparison index. Index 0 is "None" in both.
	struct FNameTable
	{
		std::vector<std::u16string> DisplayStrings{ u"None" };
		std::unordered_map<std::u16string, uint32> DisplayIndices{ { u"None", 0 } };
		std::unordered_map<std::u16string, uint32> ComparisonIndices{ { u"none", 0 } };
		uint32 NextComparisonIndex = 1;

		static FNameTable& Get()
		{
			static FNameTable Table;
			return Table;
		}
	};

	std::u16string Fold(const std::u16string& Text)
	{
		std::u16string Folded = Text;
		for (char16_t& Char : Folded)
		{
			if (Char >= u'A' && Char <= u'Z')
			{
				Char = (char16_t)(Char + 32);
			}
		}
		return Folded;
	}

	// "Name_12" splits into "Name" and number 13; a suffix with a leading zero ("_01") stays part of the name.
	int32 SplitNumber(const TCHAR* Name, int32& InOutLength)
	{
		int32 Digits = 0;
		while (Digits < InOutLength && Name[InOutLength - 1 - Digits] >= TEXT('0') && Name[InOutLength - 1 - Digits] <= TEXT('9'))
		{
			++Digits;
		}
		const int32 UnderscoreIndex = InOutLength - 1 - Digits;
		if (Digits == 0 || Digits > 10 || UnderscoreIndex <= 0 || Name[UnderscoreIndex] != TEXT('_'))
		{
			return NAME_NO_NUMBER_INTERNAL;
		}
		if (Digits > 1 && Name[UnderscoreIndex + 1] == TEXT('0'))
		{
			return NAME_NO_NUMBER_INTERNAL;
		}
		int64 Value = 0;
		for (int32 Index = UnderscoreIndex + 1; Index < InOutLength; ++Index)
		{
			Value = Value * 10 + (Name[Index] - TEXT('0'));
		}
		if (Value >= MAX_int32)
		{
			return NAME_NO_NUMBER_INTERNAL;
		}
		InOutLength = UnderscoreIndex;
		return NAME_EXTERNAL_TO_INTERNAL((int32)Value);
	}
}

FName::FName(const TCHAR* Name, EFindName FindType)
{
	Init(Name, Name ? FCString::Strlen(Name) : 0, FindType);
}

FName::FName(const ANSICHAR* Name, EFindName FindType)
{
	const FString Wide(Name);
	Init(*Wide, Wide.Len(), FindType);
}

FName::FName(FStringView Name, EFindName FindType)
{
	Init(Name.GetData(), Name.Len(), FindType);
}

FName::FName(const FName& Other, int32 InNumber)
	: ComparisonIndex(Other.ComparisonIndex)
	, DisplayIndex(Other.DisplayIndex)
	, Number(InNumber)
{
}

void FName::Init(const TCHAR* Name, int32 Length, EFindName FindType)
{
	if (!Name || Length <= 0)
	{
		return;
	}
	int32 PlainLength = Length;
	const int32 ParsedNumber = SplitNumber(Name, PlainLength);
	const std::u16string Plain(Name, Name + PlainLength);

	FNameTable& Table = FNameTable::Get();
	const std::u16string Folded = Fold(Plain);
	auto ComparisonIt = Table.ComparisonIndices.find(Folded);
	if (ComparisonIt == Table.ComparisonIndices.end())
	{
		if (FindType == FNAME_Find)
		{
			return;
		}
		ComparisonIt = Table.ComparisonIndices.emplace(Folded, Table.NextComparisonIndex++).first;
	}
	auto DisplayIt = Table.DisplayIndices.find(Plain);
	if (DisplayIt == Table.DisplayIndices.end())
	{
		DisplayIt = Table.DisplayIndices.emplace(Plain, (uint32)Table.DisplayStrings.size()).first;
		Table.DisplayStrings.push_back(Plain);
	}
	ComparisonIndex = ComparisonIt->second;
	DisplayIndex = DisplayIt->second;
	Number = ParsedNumber;
}

FString FName::GetPlainNameString() const
{
	const std::u16string& Plain = FNameTable::Get().DisplayStrings[DisplayIndex];
	return FString::ConstructFromPtrSize(Plain.data(), (int32)Plain.size());
}

FString FName::ToString() const
{
	FString Out;
	ToString(Out);
	return Out;
}

void FName::ToString(FString& Out) const
{
	Out = GetPlainNameString();
	if (Number != NAME_NO_NUMBER_INTERNAL)
	{
		Out += FString::Printf(TEXT("_%d"), NAME_INTERNAL_TO_EXTERNAL(Number));
	}
}

bool FName::LexicalLess(const FName& Other) const
{
	return ToString().Compare(Other.ToString(), ESearchCase::IgnoreCase) < 0;
}

FString LexToString(const FName& Name)
{
	return Name.ToString();
}
