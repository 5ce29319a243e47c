// UE::Math::TVector2: a 2D vector (texture coordinates, screen positions).
#pragma once

#include "Math/MathFwd.h"
#include "Math/UnrealMathUtility.h"
#include "Misc/CoreMiscDefines.h"

namespace UE::Math
{
	template <typename T>
	struct TVector2
	{
		using FReal = T;

		T X;
		T Y;

		TVector2() = default;
		constexpr TVector2(T InX, T InY) : X(InX), Y(InY) {}
		explicit constexpr TVector2(T InF) : X(InF), Y(InF) {}
		explicit constexpr TVector2(EForceInit) : X(0), Y(0) {}

		[[nodiscard]] TVector2 operator+(const TVector2& V) const { return TVector2(X + V.X, Y + V.Y); }
		[[nodiscard]] TVector2 operator-(const TVector2& V) const { return TVector2(X - V.X, Y - V.Y); }
		[[nodiscard]] TVector2 operator*(T Scale) const { return TVector2(X * Scale, Y * Scale); }
		[[nodiscard]] bool operator==(const TVector2& V) const { return X == V.X && Y == V.Y; }
		[[nodiscard]] bool operator!=(const TVector2& V) const { return !(*this == V); }

		[[nodiscard]] bool Equals(const TVector2& V, T Tolerance = UE_KINDA_SMALL_NUMBER) const
		{
			return FMath::Abs(X - V.X) <= Tolerance && FMath::Abs(Y - V.Y) <= Tolerance;
		}
	};
}
