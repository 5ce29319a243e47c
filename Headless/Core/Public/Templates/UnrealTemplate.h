// Move and forward helpers under the engine's names.
#pragma once

#include <type_traits>
#include <utility>

// As the engine's: moving from an rvalue or from a const object is a mistake, refused when compiling.
template <typename T>
constexpr std::remove_reference_t<T>&& MoveTemp(T&& Obj) noexcept
{
	using CastType = std::remove_reference_t<T>;
	static_assert(std::is_lvalue_reference_v<T>, "MoveTemp called on an rvalue");
	static_assert(!std::is_same_v<CastType&, const CastType&>, "MoveTemp called on a const object");
	return static_cast<CastType&&>(Obj);
}

template <typename T>
constexpr std::remove_reference_t<T>&& MoveTempIfPossible(T&& Obj) noexcept
{
	return static_cast<std::remove_reference_t<T>&&>(Obj);
}

template <typename T>
constexpr T&& Forward(std::remove_reference_t<T>& Obj) noexcept
{
	return static_cast<T&&>(Obj);
}

template <typename T>
constexpr T&& Forward(std::remove_reference_t<T>&& Obj) noexcept
{
	return static_cast<T&&>(Obj);
}

template <typename T>
struct TIdentity
{
	using Type = T;
};

template <typename T>
using TIdentity_T = typename TIdentity<T>::Type;

template <typename T>
inline void Swap(T& A, T& B)
{
	T Temp = MoveTemp(A);
	A = MoveTemp(B);
	B = MoveTemp(Temp);
}

#define ENUM_CLASS_FLAGS(Enum) \
	inline constexpr Enum& operator|=(Enum& Lhs, Enum Rhs) { return Lhs = (Enum)((std::underlying_type_t<Enum>)Lhs | (std::underlying_type_t<Enum>)Rhs); } \
	inline constexpr Enum& operator&=(Enum& Lhs, Enum Rhs) { return Lhs = (Enum)((std::underlying_type_t<Enum>)Lhs & (std::underlying_type_t<Enum>)Rhs); } \
	inline constexpr Enum operator|(Enum Lhs, Enum Rhs) { return (Enum)((std::underlying_type_t<Enum>)Lhs | (std::underlying_type_t<Enum>)Rhs); } \
	inline constexpr Enum operator&(Enum Lhs, Enum Rhs) { return (Enum)((std::underlying_type_t<Enum>)Lhs & (std::underlying_type_t<Enum>)Rhs); } \
	inline constexpr Enum operator~(Enum E) { return (Enum)~(std::underlying_type_t<Enum>)E; } \
	inline constexpr bool operator!(Enum E) { return !(std::underlying_type_t<Enum>)E; }

template <typename Enum>
constexpr bool EnumHasAnyFlags(Enum Flags, Enum Contains)
{
	return ((std::underlying_type_t<Enum>)Flags & (std::underlying_type_t<Enum>)Contains) != 0;
}

template <typename Enum>
constexpr bool EnumHasAllFlags(Enum Flags, Enum Contains)
{
	return ((std::underlying_type_t<Enum>)Flags & (std::underlying_type_t<Enum>)Contains) == (std::underlying_type_t<Enum>)Contains;
}
