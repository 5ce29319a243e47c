// UE::Math::TRotator: pitch, yaw and roll in degrees.
#pragma once

#include "Math/MathFwd.h"
#include "Math/Vector.h"

namespace UE::Math
{
	template <typename T>
	struct TRotator
	{
		using FReal = T;

		// Rotation about the right axis (Y): nose up is positive.
		T Pitch;
		// Rotation about the up axis (Z).
		T Yaw;
		// Rotation about the forward axis (X).
		T Roll;

		static const TRotator ZeroRotator;

		TRotator() = default;
		explicit constexpr TRotator(T InF) : Pitch(InF), Yaw(InF), Roll(InF) {}
		constexpr TRotator(T InPitch, T InYaw, T InRoll) : Pitch(InPitch), Yaw(InYaw), Roll(InRoll) {}
		explicit constexpr TRotator(EForceInit) : Pitch(0), Yaw(0), Roll(0) {}
		explicit TRotator(const TQuat<T>& Quat);

		template <typename FArg, typename = std::enable_if_t<!std::is_same_v<T, FArg>>>
		explicit constexpr TRotator(const TRotator<FArg>& From) : Pitch((T)From.Pitch), Yaw((T)From.Yaw), Roll((T)From.Roll) {}

		[[nodiscard]] CORE_API TQuat<T> Quaternion() const;

		// Euler vector: X is roll, Y is pitch, Z is yaw.
		[[nodiscard]] TVector<T> Euler() const { return TVector<T>(Roll, Pitch, Yaw); }
		[[nodiscard]] static TRotator MakeFromEuler(const TVector<T>& Euler) { return TRotator(Euler.Y, Euler.Z, Euler.X); }

		[[nodiscard]] bool operator==(const TRotator& R) const { return Pitch == R.Pitch && Yaw == R.Yaw && Roll == R.Roll; }
		[[nodiscard]] bool operator!=(const TRotator& R) const { return !(*this == R); }
		[[nodiscard]] TRotator operator+(const TRotator& R) const { return TRotator(Pitch + R.Pitch, Yaw + R.Yaw, Roll + R.Roll); }
		[[nodiscard]] TRotator operator-(const TRotator& R) const { return TRotator(Pitch - R.Pitch, Yaw - R.Yaw, Roll - R.Roll); }

		[[nodiscard]] bool ContainsNaN() const
		{
			return !FMath::IsFinite(Pitch) || !FMath::IsFinite(Yaw) || !FMath::IsFinite(Roll);
		}

		// Angle in [0, 360).
		[[nodiscard]] static T ClampAxis(T Angle)
		{
			Angle = FMath::Fmod(Angle, (T)360);
			if (Angle < (T)0)
			{
				Angle += (T)360;
			}
			return Angle;
		}

		// Angle in (-180, 180].
		[[nodiscard]] static T NormalizeAxis(T Angle)
		{
			Angle = ClampAxis(Angle);
			if (Angle > (T)180)
			{
				Angle -= (T)360;
			}
			return Angle;
		}

		[[nodiscard]] TRotator GetNormalized() const { return TRotator(NormalizeAxis(Pitch), NormalizeAxis(Yaw), NormalizeAxis(Roll)); }
		void Normalize() { *this = GetNormalized(); }

		[[nodiscard]] bool Equals(const TRotator& R, T Tolerance = UE_KINDA_SMALL_NUMBER) const
		{
			return FMath::Abs(NormalizeAxis(Pitch - R.Pitch)) <= Tolerance
				&& FMath::Abs(NormalizeAxis(Yaw - R.Yaw)) <= Tolerance
				&& FMath::Abs(NormalizeAxis(Roll - R.Roll)) <= Tolerance;
		}

		[[nodiscard]] FString ToString() const
		{
			return FString::Printf(TEXT("P=%f Y=%f R=%f"), (double)Pitch, (double)Yaw, (double)Roll);
		}
	};

	template <typename T> inline const TRotator<T> TRotator<T>::ZeroRotator(0, 0, 0);

	extern template struct TRotator<float>;
	extern template struct TRotator<double>;
}
