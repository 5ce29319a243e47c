// TTuple for pairs, with the engine's Key and Value member names, and its TPair alias.
#pragma once

#include "Templates/UnrealTemplate.h"

template <typename... Types>
struct TTuple;

template <typename KeyType, typename ValueType>
struct TTuple<KeyType, ValueType>
{
	KeyType Key;
	ValueType Value;

	TTuple() = default;
	TTuple(const KeyType& InKey, const ValueType& InValue)
		: Key(InKey)
		, Value(InValue)
	{
	}

	[[nodiscard]] bool operator==(const TTuple& Other) const { return Key == Other.Key && Value == Other.Value; }
};

template <typename KeyType, typename ValueType>
using TPair = TTuple<KeyType, ValueType>;
