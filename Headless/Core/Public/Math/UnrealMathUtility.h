// FMath and the engine's numeric constants.
#pragma once

#include "GenericPlatform/GenericPlatformMath.h"

#define UE_PI (3.1415926535897932f)
#define UE_DOUBLE_PI (3.141592653589793238462643383279502884197169399)
#define UE_HALF_PI (1.57079632679f)
#define UE_DOUBLE_HALF_PI (1.570796326794896557998981734272)
#define UE_SMALL_NUMBER (1.e-8f)
#define UE_KINDA_SMALL_NUMBER (1.e-4f)
#define UE_DOUBLE_SMALL_NUMBER (1.e-8)
#define UE_DOUBLE_KINDA_SMALL_NUMBER (1.e-4)
#define UE_BIG_NUMBER (3.4e+38f)
#define UE_THRESH_QUAT_NORMALIZED (0.01f)

struct FMath : public FGenericPlatformMath
{
	template <typename T>
	[[nodiscard]] static constexpr T Clamp(const T X, const T MinValue, const T MaxValue)
	{
		return X < MinValue ? MinValue : (X < MaxValue ? X : MaxValue);
	}

	template <typename T>
	[[nodiscard]] static constexpr T Square(const T A) { return A * A; }

	[[nodiscard]] static bool IsNearlyEqual(double A, double B, double Tolerance = UE_DOUBLE_SMALL_NUMBER)
	{
		return Abs(A - B) <= Tolerance;
	}

	[[nodiscard]] static bool IsNearlyZero(double Value, double Tolerance = UE_DOUBLE_SMALL_NUMBER)
	{
		return Abs(Value) <= Tolerance;
	}

	template <typename T>
	[[nodiscard]] static constexpr T DegreesToRadians(const T Degrees) { return Degrees * (T)(UE_DOUBLE_PI / 180.0); }
	template <typename T>
	[[nodiscard]] static constexpr T RadiansToDegrees(const T Radians) { return Radians * (T)(180.0 / UE_DOUBLE_PI); }

	// Sine and cosine of one angle in one call.
	static void SinCos(float* ScalarSin, float* ScalarCos, float Value) { ::sincosf(Value, ScalarSin, ScalarCos); }
	static void SinCos(double* ScalarSin, double* ScalarCos, double Value) { ::sincos(Value, ScalarSin, ScalarCos); }

	// Polynomial arc sine of the fast single-precision path (Abramowitz and Stegun 4.4.45, seven terms).
	[[nodiscard]] static CORE_API float FastAsin(float Value);
};
