// TArrayView: a non-owning view of contiguous elements.
#pragma once

#include "Containers/Array.h"

#include <initializer_list>
#include <type_traits>

template <typename InElementType, typename InSizeType = int32>
class TArrayView
{
public:
	using ElementType = InElementType;
	using SizeType = InSizeType;

	TArrayView() = default;

	TArrayView(ElementType* InData, SizeType InCount)
		: DataPtr(InData)
		, ArrayNum(InCount)
	{
		check(InCount >= 0);
	}

	template <typename OtherElementType,
		typename = std::enable_if_t<std::is_convertible_v<OtherElementType (*)[], ElementType (*)[]>>>
	TArrayView(TArray<OtherElementType>& Other)
		: DataPtr(Other.GetData())
		, ArrayNum(Other.Num())
	{
	}

	template <typename OtherElementType,
		typename = std::enable_if_t<std::is_convertible_v<const OtherElementType (*)[], ElementType (*)[]>>>
	TArrayView(const TArray<OtherElementType>& Other)
		: DataPtr(Other.GetData())
		, ArrayNum(Other.Num())
	{
	}

	template <typename OtherElementType,
		typename = std::enable_if_t<std::is_convertible_v<OtherElementType (*)[], ElementType (*)[]>>>
	TArrayView(const TArrayView<OtherElementType>& Other)
		: DataPtr(Other.GetData())
		, ArrayNum(Other.Num())
	{
	}

	template <SIZE_T N>
	TArrayView(ElementType (&Array)[N])
		: DataPtr(Array)
		, ArrayNum((SizeType)N)
	{
	}

	TArrayView(std::initializer_list<std::remove_const_t<ElementType>> List)
		: DataPtr(List.begin())
		, ArrayNum((SizeType)List.size())
	{
		static_assert(std::is_const_v<ElementType>, "An initializer list can only be viewed as const elements");
	}

	[[nodiscard]] SizeType Num() const { return ArrayNum; }
	[[nodiscard]] bool IsEmpty() const { return ArrayNum == 0; }
	[[nodiscard]] ElementType* GetData() const { return DataPtr; }
	[[nodiscard]] bool IsValidIndex(SizeType Index) const { return Index >= 0 && Index < ArrayNum; }

	[[nodiscard]] ElementType& operator[](SizeType Index) const
	{
		check(IsValidIndex(Index));
		return DataPtr[Index];
	}

	ElementType* begin() const { return DataPtr; }
	ElementType* end() const { return DataPtr + ArrayNum; }

private:
	ElementType* DataPtr = nullptr;
	SizeType ArrayNum = 0;
};

template <typename ElementType>
using TConstArrayView = TArrayView<const ElementType>;

template <typename ElementType>
[[nodiscard]] TArrayView<ElementType> MakeArrayView(ElementType* Pointer, int32 Size)
{
	return TArrayView<ElementType>(Pointer, Size);
}

template <typename ElementType>
[[nodiscard]] TArrayView<ElementType> MakeArrayView(TArray<ElementType>& Array)
{
	return TArrayView<ElementType>(Array.GetData(), Array.Num());
}

template <typename ElementType>
[[nodiscard]] TArrayView<const ElementType> MakeConstArrayView(const ElementType* Pointer, int32 Size)
{
	return TArrayView<const ElementType>(Pointer, Size);
}

template <typename ElementType>
[[nodiscard]] TArrayView<const ElementType> MakeConstArrayView(const TArray<ElementType>& Array)
{
	return TArrayView<const ElementType>(Array.GetData(), Array.Num());
}
