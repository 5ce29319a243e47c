#include "Math/Quat.h"
#include "Math/Rotator.h"
#include "Math/UnrealMathUtility.h"

float FMath::FastAsin(float Value)
{
	constexpr float HalfPi = 1.5707963050f;
	const bool bNonNegative = Value >= 0.0f;
	const float X = Abs(Value);
	float OneMinusX = 1.0f - X;
	if (OneMinusX < 0.0f)
	{
		OneMinusX = 0.0f;
	}
	const float Root = Sqrt(OneMinusX);
	// acos(|x|) ~ sqrt(1 - |x|) * polynomial(|x|); asin(x) = pi/2 - acos(x).
	float Result = ((((((-0.0012624911f * X + 0.0066700901f) * X - 0.0170881256f) * X + 0.0308918810f) * X - 0.0501743046f) * X
						 + 0.0889789874f) * X - 0.2145988016f) * X + HalfPi;
	Result *= Root;
	return bNonNegative ? HalfPi - Result : Result - HalfPi;
}

namespace UE::Math
{
	namespace
	{
		template <typename T>
		T AsinForRotator(T Value);

		template <>
		double AsinForRotator(double Value)
		{
			return FMath::Asin(Value);
		}

		// The single-precision conversion uses the fast polynomial, as the engine's float path does.
		template <>
		float AsinForRotator(float Value)
		{
			return FMath::FastAsin(Value);
		}
	}

	template <typename T>
	TQuat<T> TRotator<T>::Quaternion() const
	{
		// Unwinding with a sign-keeping modulo first keeps the quaternion's sign stable: yaw 370 gives the
		// same quaternion as yaw 10, not its negation.
		const T HalfDegToRad = (T)(UE_DOUBLE_PI / 360.0);
		const T PitchNoWinding = FMath::Fmod(Pitch, (T)360);
		const T YawNoWinding = FMath::Fmod(Yaw, (T)360);
		const T RollNoWinding = FMath::Fmod(Roll, (T)360);

		T SP, CP, SY, CY, SR, CR;
		FMath::SinCos(&SP, &CP, PitchNoWinding * HalfDegToRad);
		FMath::SinCos(&SY, &CY, YawNoWinding * HalfDegToRad);
		FMath::SinCos(&SR, &CR, RollNoWinding * HalfDegToRad);

		TQuat<T> Result(
			CR * SP * SY - SR * CP * CY,
			-CR * SP * CY - SR * CP * SY,
			CR * CP * SY - SR * SP * CY,
			CR * CP * CY + SR * SP * SY);
		if (Result.ContainsNaN())
		{
			Result = TQuat<T>::Identity;
		}
		return Result;
	}

	template <typename T>
	TRotator<T> TQuat<T>::Rotator() const
	{
		const T SingularityTest = Z * X - W * Y;
		const T YawY = (T)2 * (W * Z + X * Y);
		const T YawX = (T)1 - (T)2 * (Y * Y + Z * Z);

		constexpr T SingularityThreshold = (T)0.4999995;
		const T RadToDeg = (T)(180.0 / UE_DOUBLE_PI);

		TRotator<T> Result;
		if (SingularityTest < -SingularityThreshold)
		{
			Result.Pitch = (T)-90;
			Result.Yaw = TRotator<T>::NormalizeAxis((T)-2 * FMath::Atan2(X, W) * RadToDeg);
			Result.Roll = (T)0;
		}
		else if (SingularityTest > SingularityThreshold)
		{
			Result.Pitch = (T)90;
			Result.Yaw = TRotator<T>::NormalizeAxis((T)2 * FMath::Atan2(X, W) * RadToDeg);
			Result.Roll = (T)0;
		}
		else
		{
			Result.Pitch = AsinForRotator((T)2 * SingularityTest) * RadToDeg;
			Result.Yaw = FMath::Atan2(YawY, YawX) * RadToDeg;
			Result.Roll = FMath::Atan2((T)-2 * (W * X + Y * Z), (T)1 - (T)2 * (X * X + Y * Y)) * RadToDeg;
		}
		return Result;
	}

	template <typename T>
	TQuat<T>::TQuat(TVector<T> Axis, T AngleRad)
	{
		const T HalfAngle = (T)0.5 * AngleRad;
		const T S = FMath::Sin(HalfAngle);
		X = S * Axis.X;
		Y = S * Axis.Y;
		Z = S * Axis.Z;
		W = FMath::Cos(HalfAngle);
	}

	template struct TRotator<float>;
	template struct TRotator<double>;
	template struct TQuat<float>;
	template struct TQuat<double>;
}
