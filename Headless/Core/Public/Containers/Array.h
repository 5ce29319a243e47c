// TArray: a contiguous, growable array with the engine's member names and int32 sizes.
#pragma once

#include "HAL/Platform.h"
#include "Misc/AssertionMacros.h"
#include "Misc/CoreMiscDefines.h"
#include "Templates/UnrealTemplate.h"

#include <algorithm>
#include <initializer_list>
#include <new>
#include <type_traits>

template <typename InElementType>
class TArray
{
public:
	using ElementType = InElementType;
	using SizeType = int32;

	TArray() = default;

	TArray(std::initializer_list<ElementType> InitList)
	{
		Append(InitList.begin(), (SizeType)InitList.size());
	}

	TArray(const ElementType* Ptr, SizeType Count)
	{
		Append(Ptr, Count);
	}

	TArray(const TArray& Other)
	{
		Append(Other.Data, Other.ArrayNum);
	}

	TArray(TArray&& Other) noexcept
		: Data(Other.Data)
		, ArrayNum(Other.ArrayNum)
		, ArrayMax(Other.ArrayMax)
	{
		Other.Data = nullptr;
		Other.ArrayNum = 0;
		Other.ArrayMax = 0;
	}

	~TArray()
	{
		DestructRange(0, ArrayNum);
		Free(Data);
	}

	TArray& operator=(const TArray& Other)
	{
		if (this != &Other)
		{
			Reset(Other.ArrayNum);
			Append(Other.Data, Other.ArrayNum);
		}
		return *this;
	}

	TArray& operator=(TArray&& Other) noexcept
	{
		if (this != &Other)
		{
			DestructRange(0, ArrayNum);
			Free(Data);
			Data = Other.Data;
			ArrayNum = Other.ArrayNum;
			ArrayMax = Other.ArrayMax;
			Other.Data = nullptr;
			Other.ArrayNum = 0;
			Other.ArrayMax = 0;
		}
		return *this;
	}

	TArray& operator=(std::initializer_list<ElementType> InitList)
	{
		Reset((SizeType)InitList.size());
		Append(InitList.begin(), (SizeType)InitList.size());
		return *this;
	}

	[[nodiscard]] SizeType Num() const { return ArrayNum; }
	[[nodiscard]] SizeType Max() const { return ArrayMax; }
	[[nodiscard]] bool IsEmpty() const { return ArrayNum == 0; }
	[[nodiscard]] bool IsValidIndex(SizeType Index) const { return Index >= 0 && Index < ArrayNum; }
	[[nodiscard]] ElementType* GetData() { return Data; }
	[[nodiscard]] const ElementType* GetData() const { return Data; }

	[[nodiscard]] ElementType& operator[](SizeType Index)
	{
		check(IsValidIndex(Index));
		return Data[Index];
	}

	[[nodiscard]] const ElementType& operator[](SizeType Index) const
	{
		check(IsValidIndex(Index));
		return Data[Index];
	}

	[[nodiscard]] ElementType& Last(SizeType IndexFromTheEnd = 0) { return (*this)[ArrayNum - IndexFromTheEnd - 1]; }
	[[nodiscard]] const ElementType& Last(SizeType IndexFromTheEnd = 0) const { return (*this)[ArrayNum - IndexFromTheEnd - 1]; }
	[[nodiscard]] ElementType& Top() { return Last(); }

	SizeType Add(const ElementType& Item) { return Emplace(Item); }
	SizeType Add(ElementType&& Item) { return Emplace(MoveTemp(Item)); }
	void Push(const ElementType& Item) { Emplace(Item); }

	template <typename... ArgsType>
	SizeType Emplace(ArgsType&&... Args)
	{
		if (ArrayNum == ArrayMax)
		{
			// The argument may live inside this array: build the element before the buffer moves.
			ElementType Temp(Forward<ArgsType>(Args)...);
			Grow(ArrayNum + 1);
			new (Data + ArrayNum) ElementType(MoveTemp(Temp));
		}
		else
		{
			new (Data + ArrayNum) ElementType(Forward<ArgsType>(Args)...);
		}
		return ArrayNum++;
	}

	template <typename... ArgsType>
	ElementType& Emplace_GetRef(ArgsType&&... Args)
	{
		const SizeType Index = Emplace(Forward<ArgsType>(Args)...);
		return Data[Index];
	}

	SizeType AddDefaulted(SizeType Count = 1)
	{
		const SizeType First = ArrayNum;
		GrowFor(ArrayNum + Count);
		for (SizeType Index = 0; Index < Count; ++Index)
		{
			new (Data + ArrayNum) ElementType();
			++ArrayNum;
		}
		return First;
	}

	ElementType& AddDefaulted_GetRef()
	{
		const SizeType Index = AddDefaulted(1);
		return Data[Index];
	}

	SizeType AddZeroed(SizeType Count = 1)
	{
		static_assert(std::is_trivially_copyable_v<ElementType>, "AddZeroed needs a trivially copyable element type");
		const SizeType First = AddUninitialized(Count);
		for (SizeType Index = First; Index < ArrayNum; ++Index)
		{
			new (Data + Index) ElementType{};
		}
		return First;
	}

	SizeType AddUninitialized(SizeType Count = 1)
	{
		static_assert(std::is_trivially_copyable_v<ElementType>, "AddUninitialized needs a trivially copyable element type");
		check(Count >= 0);
		const SizeType First = ArrayNum;
		GrowFor(ArrayNum + Count);
		ArrayNum += Count;
		return First;
	}

	SizeType AddUnique(const ElementType& Item)
	{
		const SizeType Existing = Find(Item);
		return Existing != INDEX_NONE ? Existing : Add(Item);
	}

	void Append(const ElementType* Ptr, SizeType Count)
	{
		check(Count >= 0);
		if (Count == 0)
		{
			return;
		}
		if (Ptr >= Data && Ptr < Data + ArrayNum)
		{
			TArray Copy(Ptr, Count);
			Append(Copy.Data, Count);
			return;
		}
		GrowFor(ArrayNum + Count);
		for (SizeType Index = 0; Index < Count; ++Index)
		{
			new (Data + ArrayNum) ElementType(Ptr[Index]);
			++ArrayNum;
		}
	}

	void Append(const TArray& Source) { Append(Source.Data, Source.ArrayNum); }

	void Append(TArray&& Source)
	{
		GrowFor(ArrayNum + Source.ArrayNum);
		for (SizeType Index = 0; Index < Source.ArrayNum; ++Index)
		{
			new (Data + ArrayNum) ElementType(MoveTemp(Source.Data[Index]));
			++ArrayNum;
		}
		Source.Empty();
	}

	void Append(std::initializer_list<ElementType> InitList) { Append(InitList.begin(), (SizeType)InitList.size()); }

	SizeType Insert(const ElementType& Item, SizeType Index)
	{
		check(Index >= 0 && Index <= ArrayNum);
		ElementType Temp(Item);
		Emplace(MoveTemp(Temp));
		std::rotate(Data + Index, Data + ArrayNum - 1, Data + ArrayNum);
		return Index;
	}

	void RemoveAt(SizeType Index, SizeType Count = 1)
	{
		check(Index >= 0 && Count >= 0 && Index + Count <= ArrayNum);
		std::move(Data + Index + Count, Data + ArrayNum, Data + Index);
		DestructRange(ArrayNum - Count, ArrayNum);
		ArrayNum -= Count;
	}

	SizeType Remove(const ElementType& Item)
	{
		return RemoveAll([&Item](const ElementType& Element) { return Element == Item; });
	}

	template <typename Predicate>
	SizeType RemoveAll(Predicate Pred)
	{
		ElementType* NewEnd = std::remove_if(Data, Data + ArrayNum, Pred);
		const SizeType Removed = (SizeType)((Data + ArrayNum) - NewEnd);
		DestructRange(ArrayNum - Removed, ArrayNum);
		ArrayNum -= Removed;
		return Removed;
	}

	ElementType Pop()
	{
		check(ArrayNum > 0);
		ElementType Result = MoveTemp(Data[ArrayNum - 1]);
		RemoveAt(ArrayNum - 1);
		return Result;
	}

	void Reset(SizeType NewSize = 0)
	{
		DestructRange(0, ArrayNum);
		ArrayNum = 0;
		Reserve(NewSize);
	}

	void Empty(SizeType Slack = 0)
	{
		DestructRange(0, ArrayNum);
		ArrayNum = 0;
		if (ArrayMax != Slack)
		{
			Free(Data);
			Data = nullptr;
			ArrayMax = 0;
			Reserve(Slack);
		}
	}

	void Reserve(SizeType Number)
	{
		if (Number > ArrayMax)
		{
			Reallocate(Number);
		}
	}

	void Shrink()
	{
		if (ArrayMax != ArrayNum)
		{
			Reallocate(ArrayNum);
		}
	}

	void SetNum(SizeType NewNum, EAllowShrinking AllowShrinking = EAllowShrinking::Default)
	{
		check(NewNum >= 0);
		if (NewNum > ArrayNum)
		{
			AddDefaulted(NewNum - ArrayNum);
		}
		else if (NewNum < ArrayNum)
		{
			RemoveAt(NewNum, ArrayNum - NewNum);
			if (AllowShrinking == EAllowShrinking::Yes)
			{
				Shrink();
			}
		}
	}

	void SetNumUninitialized(SizeType NewNum)
	{
		static_assert(std::is_trivially_copyable_v<ElementType>, "SetNumUninitialized needs a trivially copyable element type");
		GrowFor(NewNum);
		ArrayNum = NewNum;
	}

	[[nodiscard]] SizeType Find(const ElementType& Item) const
	{
		for (SizeType Index = 0; Index < ArrayNum; ++Index)
		{
			if (Data[Index] == Item)
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}

	bool Find(const ElementType& Item, SizeType& OutIndex) const
	{
		OutIndex = Find(Item);
		return OutIndex != INDEX_NONE;
	}

	template <typename KeyType>
	[[nodiscard]] SizeType IndexOfByKey(const KeyType& Key) const
	{
		for (SizeType Index = 0; Index < ArrayNum; ++Index)
		{
			if (Data[Index] == Key)
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}

	template <typename Predicate>
	[[nodiscard]] SizeType IndexOfByPredicate(Predicate Pred) const
	{
		for (SizeType Index = 0; Index < ArrayNum; ++Index)
		{
			if (Pred(Data[Index]))
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}

	template <typename Predicate>
	[[nodiscard]] ElementType* FindByPredicate(Predicate Pred)
	{
		const SizeType Index = IndexOfByPredicate(Pred);
		return Index == INDEX_NONE ? nullptr : Data + Index;
	}

	template <typename Predicate>
	[[nodiscard]] const ElementType* FindByPredicate(Predicate Pred) const
	{
		const SizeType Index = IndexOfByPredicate(Pred);
		return Index == INDEX_NONE ? nullptr : Data + Index;
	}

	template <typename ComparisonType>
	[[nodiscard]] bool Contains(const ComparisonType& Item) const
	{
		return IndexOfByKey(Item) != INDEX_NONE;
	}

	template <typename Predicate>
	[[nodiscard]] bool ContainsByPredicate(Predicate Pred) const
	{
		return IndexOfByPredicate(Pred) != INDEX_NONE;
	}

	void Sort()
	{
		std::sort(Data, Data + ArrayNum);
	}

	template <typename Predicate>
	void Sort(Predicate Pred)
	{
		std::sort(Data, Data + ArrayNum, Pred);
	}

	template <typename Predicate>
	void StableSort(Predicate Pred)
	{
		std::stable_sort(Data, Data + ArrayNum, Pred);
	}

	[[nodiscard]] bool operator==(const TArray& Other) const
	{
		if (ArrayNum != Other.ArrayNum)
		{
			return false;
		}
		for (SizeType Index = 0; Index < ArrayNum; ++Index)
		{
			if (!(Data[Index] == Other.Data[Index]))
			{
				return false;
			}
		}
		return true;
	}

	[[nodiscard]] bool operator!=(const TArray& Other) const { return !(*this == Other); }

	ElementType* begin() { return Data; }
	ElementType* end() { return Data + ArrayNum; }
	const ElementType* begin() const { return Data; }
	const ElementType* end() const { return Data + ArrayNum; }

private:
	static ElementType* Allocate(SizeType Count)
	{
		return static_cast<ElementType*>(::operator new(sizeof(ElementType) * (SIZE_T)Count, std::align_val_t(alignof(ElementType))));
	}

	static void Free(ElementType* Ptr)
	{
		if (Ptr)
		{
			::operator delete(Ptr, std::align_val_t(alignof(ElementType)));
		}
	}

	// Adding elements grows the allocation geometrically, as the engine's default slack policy does, so that
	// adding one element at a time stays linear; Reserve alone allocates exactly.
	void GrowFor(SizeType Needed)
	{
		if (Needed > ArrayMax)
		{
			Grow(Needed);
		}
	}

	void Grow(SizeType MinimumMax)
	{
		SizeType NewMax = ArrayMax < 4 ? 4 : ArrayMax + ArrayMax / 2 + 4;
		Reallocate(NewMax > MinimumMax ? NewMax : MinimumMax);
	}

	void Reallocate(SizeType NewMax)
	{
		check(NewMax >= ArrayNum);
		ElementType* NewData = NewMax > 0 ? Allocate(NewMax) : nullptr;
		for (SizeType Index = 0; Index < ArrayNum; ++Index)
		{
			new (NewData + Index) ElementType(MoveTemp(Data[Index]));
			Data[Index].~ElementType();
		}
		Free(Data);
		Data = NewData;
		ArrayMax = NewMax;
	}

	void DestructRange(SizeType From, SizeType To)
	{
		if constexpr (!std::is_trivially_destructible_v<ElementType>)
		{
			for (SizeType Index = From; Index < To; ++Index)
			{
				Data[Index].~ElementType();
			}
		}
	}

	ElementType* Data = nullptr;
	SizeType ArrayNum = 0;
	SizeType ArrayMax = 0;
};
