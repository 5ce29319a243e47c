// UE::Math::TQuat: a rotation quaternion (X, Y, Z, W).
#pragma once

#include "Math/MathFwd.h"
#include "Math/Rotator.h"
#include "Math/Vector.h"

namespace UE::Math
{
	template <typename T>
	struct alignas(sizeof(T) * 4) TQuat
	{
		using FReal = T;

		T X;
		T Y;
		T Z;
		T W;

		static const TQuat Identity;

		TQuat() = default;
		constexpr TQuat(T InX, T InY, T InZ, T InW) : X(InX), Y(InY), Z(InZ), W(InW) {}
		explicit constexpr TQuat(EForceInit) : X(0), Y(0), Z(0), W(1) {}
		explicit TQuat(const TRotator<T>& R) { *this = R.Quaternion(); }
		CORE_API TQuat(TVector<T> Axis, T AngleRad);

		template <typename FArg, typename = std::enable_if_t<!std::is_same_v<T, FArg>>>
		explicit constexpr TQuat(const TQuat<FArg>& From) : X((T)From.X), Y((T)From.Y), Z((T)From.Z), W((T)From.W) {}

		[[nodiscard]] CORE_API TRotator<T> Rotator() const;
		[[nodiscard]] TVector<T> Euler() const { return Rotator().Euler(); }
		[[nodiscard]] static TQuat MakeFromEuler(const TVector<T>& Euler) { return TRotator<T>::MakeFromEuler(Euler).Quaternion(); }
		[[nodiscard]] static TQuat MakeFromRotator(const TRotator<T>& R) { return R.Quaternion(); }

		[[nodiscard]] T SizeSquared() const { return X * X + Y * Y + Z * Z + W * W; }
		[[nodiscard]] T Size() const { return FMath::Sqrt(SizeSquared()); }
		[[nodiscard]] bool IsNormalized() const { return FMath::Abs((T)1 - SizeSquared()) < (T)UE_THRESH_QUAT_NORMALIZED; }

		void Normalize(T Tolerance = UE_SMALL_NUMBER)
		{
			const T SquareSum = SizeSquared();
			if (SquareSum >= Tolerance)
			{
				const T Scale = (T)1 / FMath::Sqrt(SquareSum);
				X *= Scale;
				Y *= Scale;
				Z *= Scale;
				W *= Scale;
			}
			else
			{
				*this = Identity;
			}
		}

		[[nodiscard]] TQuat GetNormalized(T Tolerance = UE_SMALL_NUMBER) const
		{
			TQuat Result(*this);
			Result.Normalize(Tolerance);
			return Result;
		}

		[[nodiscard]] bool ContainsNaN() const
		{
			return !FMath::IsFinite(X) || !FMath::IsFinite(Y) || !FMath::IsFinite(Z) || !FMath::IsFinite(W);
		}

		// Equal up to the sign of the whole quaternion, which describes the same rotation.
		[[nodiscard]] bool Equals(const TQuat& Q, T Tolerance = UE_KINDA_SMALL_NUMBER) const
		{
			return (FMath::Abs(X - Q.X) <= Tolerance && FMath::Abs(Y - Q.Y) <= Tolerance && FMath::Abs(Z - Q.Z) <= Tolerance && FMath::Abs(W - Q.W) <= Tolerance)
				|| (FMath::Abs(X + Q.X) <= Tolerance && FMath::Abs(Y + Q.Y) <= Tolerance && FMath::Abs(Z + Q.Z) <= Tolerance && FMath::Abs(W + Q.W) <= Tolerance);
		}

		[[nodiscard]] bool operator==(const TQuat& Q) const { return X == Q.X && Y == Q.Y && Z == Q.Z && W == Q.W; }
		[[nodiscard]] bool operator!=(const TQuat& Q) const { return !(*this == Q); }

		// Hamilton product: the result applies Q first, then this.
		[[nodiscard]] TQuat operator*(const TQuat& Q) const
		{
			return TQuat(
				W * Q.X + X * Q.W + Y * Q.Z - Z * Q.Y,
				W * Q.Y - X * Q.Z + Y * Q.W + Z * Q.X,
				W * Q.Z + X * Q.Y - Y * Q.X + Z * Q.W,
				W * Q.W - X * Q.X - Y * Q.Y - Z * Q.Z);
		}

		[[nodiscard]] TQuat Inverse() const { return TQuat(-X, -Y, -Z, W); }

		[[nodiscard]] TVector<T> RotateVector(const TVector<T>& V) const
		{
			const TVector<T> Q(X, Y, Z);
			const TVector<T> TT = (Q ^ V) * (T)2;
			return V + TT * W + (Q ^ TT);
		}
	};

	template <typename T> inline const TQuat<T> TQuat<T>::Identity(0, 0, 0, 1);

	template <typename T>
	inline TRotator<T>::TRotator(const TQuat<T>& Quat)
	{
		*this = Quat.Rotator();
	}

	extern template struct TQuat<float>;
	extern template struct TQuat<double>;
}
