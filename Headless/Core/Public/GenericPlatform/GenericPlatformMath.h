// Scalar maths of the generic platform layer.
#pragma once

#include "HAL/Platform.h"

#include <cmath>
#include <cstring>

struct FGenericPlatformMath
{
	// True for NaN: all exponent bits set and a non-zero mantissa.
	[[nodiscard]] static bool IsNaN(float A)
	{
		uint32 Bits;
		std::memcpy(&Bits, &A, sizeof(Bits));
		return (Bits & 0x7FFFFFFFu) > 0x7F800000u;
	}

	[[nodiscard]] static bool IsNaN(double A)
	{
		uint64 Bits;
		std::memcpy(&Bits, &A, sizeof(Bits));
		return (Bits & 0x7FFFFFFFFFFFFFFFull) > 0x7FF0000000000000ull;
	}

	// False for NaN and both infinities: the exponent bits are not all set.
	[[nodiscard]] static bool IsFinite(float A)
	{
		uint32 Bits;
		std::memcpy(&Bits, &A, sizeof(Bits));
		return (Bits & 0x7F800000u) != 0x7F800000u;
	}

	[[nodiscard]] static bool IsFinite(double A)
	{
		uint64 Bits;
		std::memcpy(&Bits, &A, sizeof(Bits));
		return (Bits & 0x7FF0000000000000ull) != 0x7FF0000000000000ull;
	}

	template <typename T>
	[[nodiscard]] static constexpr T Abs(const T A) { return A < (T)0 ? -A : A; }
	template <typename T>
	[[nodiscard]] static constexpr T Max(const T A, const T B) { return B < A ? A : B; }
	template <typename T>
	[[nodiscard]] static constexpr T Min(const T A, const T B) { return A < B ? A : B; }

	[[nodiscard]] static float Sqrt(float Value) { return std::sqrt(Value); }
	[[nodiscard]] static double Sqrt(double Value) { return std::sqrt(Value); }
	[[nodiscard]] static float Sin(float Value) { return std::sin(Value); }
	[[nodiscard]] static double Sin(double Value) { return std::sin(Value); }
	[[nodiscard]] static float Cos(float Value) { return std::cos(Value); }
	[[nodiscard]] static double Cos(double Value) { return std::cos(Value); }
	// The engine's arc tangent takes its sign from Y < 0, so a negative zero counts as zero: (-0, 1) gives
	// +0 and (-0, -1) gives +pi, where the C library gives -0 and -pi.
	[[nodiscard]] static float Atan2(float Y, float X) { return std::atan2(Y == 0.0f ? 0.0f : Y, X); }
	[[nodiscard]] static double Atan2(double Y, double X) { return std::atan2(Y == 0.0 ? 0.0 : Y, X); }

	// Arc sine with the input clamped to [-1, 1], so that rounding just past the range stays defined.
	[[nodiscard]] static float Asin(float Value) { return std::asin(Value < -1.f ? -1.f : (Value < 1.f ? Value : 1.f)); }
	[[nodiscard]] static double Asin(double Value) { return std::asin(Value < -1.0 ? -1.0 : (Value < 1.0 ? Value : 1.0)); }

	// Truncating modulo that keeps the sign of X: X - trunc(X / Y) * Y.
	[[nodiscard]] static float Fmod(float X, float Y) { return std::fmod(X, Y); }
	[[nodiscard]] static double Fmod(double X, double Y) { return std::fmod(X, Y); }

	[[nodiscard]] static int32 RoundToInt(double Value) { return (int32)std::floor(Value + 0.5); }
	[[nodiscard]] static int32 FloorToInt(double Value) { return (int32)std::floor(Value); }
};
