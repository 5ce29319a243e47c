// TStringView: a non-owning view of characters, not necessarily NUL-terminated.
#pragma once

#include "HAL/Platform.h"
#include "Misc/CString.h"

#include <type_traits>

namespace UE::Core::Private
{
	// Looked up by argument-dependent lookup, so that any string type can offer its characters.
	template <typename RangeType>
	auto GetRangeData(const RangeType& Range) -> decltype(GetData(Range))
	{
		return GetData(Range);
	}

	template <typename RangeType>
	auto GetRangeNum(const RangeType& Range) -> decltype(GetNum(Range))
	{
		return GetNum(Range);
	}
}

template <typename InCharType>
class TStringView
{
public:
	using ElementType = InCharType;

	constexpr TStringView() = default;

	TStringView(const ElementType* InData)
		: DataPtr(InData)
		, Size(InData ? TCString<ElementType>::Strlen(InData) : 0)
	{
	}

	constexpr TStringView(const ElementType* InData, int32 InSize)
		: DataPtr(InData)
		, Size(InSize)
	{
	}

	// Any contiguous range of these characters with GetCharArray-style access, such as FString.
	template <typename RangeType,
		typename = std::enable_if_t<!std::is_pointer_v<std::decay_t<RangeType>>
			&& std::is_same_v<std::remove_cv_t<std::remove_pointer_t<decltype(UE::Core::Private::GetRangeData(std::declval<const RangeType&>()))>>, ElementType>>>
	TStringView(const RangeType& Range)
		: DataPtr(UE::Core::Private::GetRangeData(Range))
		, Size(UE::Core::Private::GetRangeNum(Range))
	{
	}

	[[nodiscard]] const ElementType* GetData() const { return DataPtr; }
	[[nodiscard]] int32 Len() const { return Size; }
	[[nodiscard]] bool IsEmpty() const { return Size == 0; }
	[[nodiscard]] const ElementType& operator[](int32 Index) const { return DataPtr[Index]; }
	const ElementType* begin() const { return DataPtr; }
	const ElementType* end() const { return DataPtr + Size; }

	[[nodiscard]] bool Equals(TStringView Other, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const
	{
		if (Size != Other.Size)
		{
			return false;
		}
		for (int32 Index = 0; Index < Size; ++Index)
		{
			ElementType A = DataPtr[Index];
			ElementType B = Other.DataPtr[Index];
			if (SearchCase == ESearchCase::IgnoreCase)
			{
				A = (A >= 'A' && A <= 'Z') ? (ElementType)(A + 32) : A;
				B = (B >= 'A' && B <= 'Z') ? (ElementType)(B + 32) : B;
			}
			if (A != B)
			{
				return false;
			}
		}
		return true;
	}

	[[nodiscard]] bool StartsWith(TStringView Prefix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const
	{
		return Prefix.Size <= Size && TStringView(DataPtr, Prefix.Size).Equals(Prefix, SearchCase);
	}

	[[nodiscard]] TStringView Left(int32 Count) const { return TStringView(DataPtr, Count < 0 ? 0 : (Count > Size ? Size : Count)); }

	[[nodiscard]] TStringView RightChop(int32 Count) const
	{
		const int32 Chop = Count < 0 ? 0 : (Count > Size ? Size : Count);
		return TStringView(DataPtr + Chop, Size - Chop);
	}

private:
	const ElementType* DataPtr = nullptr;
	int32 Size = 0;
};

using FStringView = TStringView<TCHAR>;
using FWideStringView = TStringView<WIDECHAR>;
using FAnsiStringView = TStringView<ANSICHAR>;
using FUtf8StringView = TStringView<UTF8CHAR>;
