// Forward declarations and the large-world typedefs of the maths types.
#pragma once

namespace UE::Math
{
	template <typename T> struct TVector;
	template <typename T> struct TVector2;
	template <typename T> struct TRotator;
	template <typename T> struct TQuat;
	template <typename T> struct TTransform;
}

using FVector = UE::Math::TVector<double>;
using FVector3f = UE::Math::TVector<float>;
using FVector3d = UE::Math::TVector<double>;
using FVector2D = UE::Math::TVector2<double>;
using FVector2f = UE::Math::TVector2<float>;
using FRotator = UE::Math::TRotator<double>;
using FRotator3f = UE::Math::TRotator<float>;
using FRotator3d = UE::Math::TRotator<double>;
using FQuat = UE::Math::TQuat<double>;
using FQuat4f = UE::Math::TQuat<float>;
using FQuat4d = UE::Math::TQuat<double>;
using FTransform = UE::Math::TTransform<double>;
using FTransform3f = UE::Math::TTransform<float>;
using FTransform3d = UE::Math::TTransform<double>;
