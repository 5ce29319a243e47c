// UE::Math::TVector: a 3D vector.
#pragma once

#include "Containers/UnrealString.h"
#include "Math/MathFwd.h"
#include "Math/UnrealMathUtility.h"
#include "Misc/CoreMiscDefines.h"

namespace UE::Math
{
	template <typename T>
	struct TVector
	{
		using FReal = T;

		T X;
		T Y;
		T Z;

		static const TVector ZeroVector;
		static const TVector OneVector;
		static const TVector UpVector;
		static const TVector ForwardVector;
		static const TVector RightVector;

		TVector() = default;
		constexpr TVector(T InX, T InY, T InZ) : X(InX), Y(InY), Z(InZ) {}
		explicit constexpr TVector(T InF) : X(InF), Y(InF), Z(InF) {}
		explicit constexpr TVector(EForceInit) : X(0), Y(0), Z(0) {}

		template <typename FArg, typename = std::enable_if_t<!std::is_same_v<T, FArg>>>
		explicit constexpr TVector(const TVector<FArg>& From) : X((T)From.X), Y((T)From.Y), Z((T)From.Z) {}

		[[nodiscard]] TVector operator+(const TVector& V) const { return TVector(X + V.X, Y + V.Y, Z + V.Z); }
		[[nodiscard]] TVector operator-(const TVector& V) const { return TVector(X - V.X, Y - V.Y, Z - V.Z); }
		[[nodiscard]] TVector operator*(const TVector& V) const { return TVector(X * V.X, Y * V.Y, Z * V.Z); }
		[[nodiscard]] TVector operator*(T Scale) const { return TVector(X * Scale, Y * Scale, Z * Scale); }
		[[nodiscard]] TVector operator/(T Scale) const { return TVector(X / Scale, Y / Scale, Z / Scale); }
		[[nodiscard]] TVector operator-() const { return TVector(-X, -Y, -Z); }
		TVector& operator+=(const TVector& V) { X += V.X; Y += V.Y; Z += V.Z; return *this; }
		TVector& operator-=(const TVector& V) { X -= V.X; Y -= V.Y; Z -= V.Z; return *this; }
		TVector& operator*=(T Scale) { X *= Scale; Y *= Scale; Z *= Scale; return *this; }
		[[nodiscard]] bool operator==(const TVector& V) const { return X == V.X && Y == V.Y && Z == V.Z; }
		[[nodiscard]] bool operator!=(const TVector& V) const { return !(*this == V); }
		[[nodiscard]] T& operator[](int32 Index) { return Index == 0 ? X : (Index == 1 ? Y : Z); }
		[[nodiscard]] T operator[](int32 Index) const { return Index == 0 ? X : (Index == 1 ? Y : Z); }

		// Dot product.
		[[nodiscard]] T operator|(const TVector& V) const { return X * V.X + Y * V.Y + Z * V.Z; }
		// Cross product.
		[[nodiscard]] TVector operator^(const TVector& V) const
		{
			return TVector(Y * V.Z - Z * V.Y, Z * V.X - X * V.Z, X * V.Y - Y * V.X);
		}

		[[nodiscard]] static T DotProduct(const TVector& A, const TVector& B) { return A | B; }
		[[nodiscard]] static TVector CrossProduct(const TVector& A, const TVector& B) { return A ^ B; }

		[[nodiscard]] T SizeSquared() const { return X * X + Y * Y + Z * Z; }
		[[nodiscard]] T Size() const { return FMath::Sqrt(SizeSquared()); }
		[[nodiscard]] bool IsZero() const { return X == 0 && Y == 0 && Z == 0; }

		[[nodiscard]] bool IsNearlyZero(T Tolerance = UE_KINDA_SMALL_NUMBER) const
		{
			return FMath::Abs(X) <= Tolerance && FMath::Abs(Y) <= Tolerance && FMath::Abs(Z) <= Tolerance;
		}

		[[nodiscard]] bool Equals(const TVector& V, T Tolerance = UE_KINDA_SMALL_NUMBER) const
		{
			return FMath::Abs(X - V.X) <= Tolerance && FMath::Abs(Y - V.Y) <= Tolerance && FMath::Abs(Z - V.Z) <= Tolerance;
		}

		// True when any component is NaN or infinite.
		[[nodiscard]] bool ContainsNaN() const
		{
			return !FMath::IsFinite(X) || !FMath::IsFinite(Y) || !FMath::IsFinite(Z);
		}

		[[nodiscard]] TVector GetSafeNormal(T Tolerance = UE_SMALL_NUMBER) const
		{
			const T SquareSum = SizeSquared();
			if (SquareSum == (T)1)
			{
				return *this;
			}
			if (SquareSum < Tolerance)
			{
				return TVector((T)0);
			}
			return *this * ((T)1 / FMath::Sqrt(SquareSum));
		}

		[[nodiscard]] FString ToString() const
		{
			return FString::Printf(TEXT("X=%3.3f Y=%3.3f Z=%3.3f"), (double)X, (double)Y, (double)Z);
		}
	};

	template <typename T> inline const TVector<T> TVector<T>::ZeroVector(0, 0, 0);
	template <typename T> inline const TVector<T> TVector<T>::OneVector(1, 1, 1);
	template <typename T> inline const TVector<T> TVector<T>::UpVector(0, 0, 1);
	template <typename T> inline const TVector<T> TVector<T>::ForwardVector(1, 0, 0);
	template <typename T> inline const TVector<T> TVector<T>::RightVector(0, 1, 0);

	template <typename T, typename ScaleType, typename = std::enable_if_t<std::is_arithmetic_v<ScaleType>>>
	[[nodiscard]] inline TVector<T> operator*(ScaleType Scale, const TVector<T>& V)
	{
		return V * (T)Scale;
	}
}
