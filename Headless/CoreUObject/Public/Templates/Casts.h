// Checked casts between object classes.
#pragma once

#include "Misc/AssertionMacros.h"
#include "UObject/Class.h"
#include "UObject/Object.h"
#include "UObject/ObjectPtr.h"

#include <type_traits>

template <typename To, typename From>
[[nodiscard]] auto Cast(From* Src) -> std::conditional_t<std::is_const_v<From>, const To*, To*>
{
	return Src && ((const UObjectBaseUtility*)Src)->IsA(To::StaticClass()) ? (std::conditional_t<std::is_const_v<From>, const To*, To*>)Src : nullptr;
}

template <typename To, typename From>
[[nodiscard]] To* Cast(const TObjectPtr<From>& Src)
{
	return Cast<To>(Src.Get());
}

namespace ECastCheckedType
{
	enum Type
	{
		NullAllowed,
		NullChecked,
	};
}

template <typename To, typename From>
[[nodiscard]] auto CastChecked(From* Src, ECastCheckedType::Type CheckType = ECastCheckedType::NullChecked)
{
	auto Result = Cast<To>(Src);
	check(Result || (!Src && CheckType == ECastCheckedType::NullAllowed));
	return Result;
}

template <typename To, typename From>
[[nodiscard]] auto ExactCast(From* Src) -> std::conditional_t<std::is_const_v<From>, const To*, To*>
{
	return Src && ((const UObjectBaseUtility*)Src)->GetClass() == To::StaticClass() ? (std::conditional_t<std::is_const_v<From>, const To*, To*>)Src : nullptr;
}
