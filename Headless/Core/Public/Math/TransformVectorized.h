// UE::Math::TTransform: rotation, translation and 3D scale, each held in one four-lane register as the
// engine's vectorised transform holds them (translation and scale keep 0 in their fourth lane).
#pragma once

#include "Math/MathFwd.h"
#include "Math/Quat.h"
#include "Math/Rotator.h"
#include "Math/Vector.h"

namespace UE::Math
{
	template <typename T>
	struct alignas(sizeof(T) * 4) TPersistentVectorRegister
	{
		T V[4];
	};

	template <typename T>
	struct alignas(sizeof(T) * 4) TTransform
	{
		using FReal = T;

		static const TTransform Identity;

		TTransform()
		{
			SetIdentity();
		}

		explicit TTransform(ENoInit) {}

		explicit TTransform(const TVector<T>& InTranslation)
		{
			SetComponents(TQuat<T>::Identity, InTranslation, TVector<T>::OneVector);
		}

		explicit TTransform(const TQuat<T>& InRotation)
		{
			SetComponents(InRotation, TVector<T>::ZeroVector, TVector<T>::OneVector);
		}

		explicit TTransform(const TRotator<T>& InRotation)
		{
			SetComponents(InRotation.Quaternion(), TVector<T>::ZeroVector, TVector<T>::OneVector);
		}

		TTransform(const TQuat<T>& InRotation, const TVector<T>& InTranslation, const TVector<T>& InScale3D = TVector<T>(1, 1, 1))
		{
			SetComponents(InRotation, InTranslation, InScale3D);
		}

		TTransform(const TRotator<T>& InRotation, const TVector<T>& InTranslation, const TVector<T>& InScale3D = TVector<T>(1, 1, 1))
		{
			SetComponents(InRotation.Quaternion(), InTranslation, InScale3D);
		}

		// Lane by lane conversion between precisions, fourth lanes included.
		template <typename FArg, typename = std::enable_if_t<!std::is_same_v<T, FArg>>>
		explicit TTransform(const TTransform<FArg>& From)
		{
			for (int32 Lane = 0; Lane < 4; ++Lane)
			{
				Rotation.V[Lane] = (T)From.GetRotationLane(Lane);
				Translation.V[Lane] = (T)From.GetTranslationLane(Lane);
				Scale3D.V[Lane] = (T)From.GetScale3DLane(Lane);
			}
		}

		void SetIdentity()
		{
			SetComponents(TQuat<T>::Identity, TVector<T>::ZeroVector, TVector<T>::OneVector);
		}

		void SetComponents(const TQuat<T>& InRotation, const TVector<T>& InTranslation, const TVector<T>& InScale3D)
		{
			SetRotation(InRotation);
			SetTranslation(InTranslation);
			SetScale3D(InScale3D);
		}

		void SetRotation(const TQuat<T>& InRotation)
		{
			Rotation.V[0] = InRotation.X;
			Rotation.V[1] = InRotation.Y;
			Rotation.V[2] = InRotation.Z;
			Rotation.V[3] = InRotation.W;
		}

		void SetTranslation(const TVector<T>& InTranslation)
		{
			Translation.V[0] = InTranslation.X;
			Translation.V[1] = InTranslation.Y;
			Translation.V[2] = InTranslation.Z;
			Translation.V[3] = 0;
		}

		void SetLocation(const TVector<T>& InLocation) { SetTranslation(InLocation); }

		void SetScale3D(const TVector<T>& InScale3D)
		{
			Scale3D.V[0] = InScale3D.X;
			Scale3D.V[1] = InScale3D.Y;
			Scale3D.V[2] = InScale3D.Z;
			Scale3D.V[3] = 0;
		}

		[[nodiscard]] TQuat<T> GetRotation() const { return TQuat<T>(Rotation.V[0], Rotation.V[1], Rotation.V[2], Rotation.V[3]); }
		[[nodiscard]] TVector<T> GetTranslation() const { return TVector<T>(Translation.V[0], Translation.V[1], Translation.V[2]); }
		[[nodiscard]] TVector<T> GetLocation() const { return GetTranslation(); }
		[[nodiscard]] TVector<T> GetScale3D() const { return TVector<T>(Scale3D.V[0], Scale3D.V[1], Scale3D.V[2]); }
		[[nodiscard]] TRotator<T> Rotator() const { return GetRotation().Rotator(); }

		[[nodiscard]] T GetRotationLane(int32 Lane) const { return Rotation.V[Lane]; }
		[[nodiscard]] T GetTranslationLane(int32 Lane) const { return Translation.V[Lane]; }
		[[nodiscard]] T GetScale3DLane(int32 Lane) const { return Scale3D.V[Lane]; }

		// True when any of the twelve lanes is NaN or infinite, despite the name.
		[[nodiscard]] bool ContainsNaN() const
		{
			for (int32 Lane = 0; Lane < 4; ++Lane)
			{
				if (!FMath::IsFinite(Rotation.V[Lane]) || !FMath::IsFinite(Translation.V[Lane]) || !FMath::IsFinite(Scale3D.V[Lane]))
				{
					return true;
				}
			}
			return false;
		}

		[[nodiscard]] bool IsRotationNormalized() const { return GetRotation().IsNormalized(); }
		[[nodiscard]] bool IsValid() const { return !ContainsNaN() && IsRotationNormalized(); }

		[[nodiscard]] bool Equals(const TTransform& Other, T Tolerance = UE_KINDA_SMALL_NUMBER) const
		{
			return GetRotation().Equals(Other.GetRotation(), Tolerance)
				&& GetTranslation().Equals(Other.GetTranslation(), Tolerance)
				&& GetScale3D().Equals(Other.GetScale3D(), Tolerance);
		}

		// Scale, then rotate, then translate.
		[[nodiscard]] TVector<T> TransformPosition(const TVector<T>& V) const
		{
			return GetRotation().RotateVector(GetScale3D() * V) + GetTranslation();
		}

	private:
		TPersistentVectorRegister<T> Rotation;
		TPersistentVectorRegister<T> Translation;
		TPersistentVectorRegister<T> Scale3D;
	};

	template <typename T> inline const TTransform<T> TTransform<T>::Identity;

	static_assert(sizeof(TTransform<double>) == 96, "three four-lane double registers");
	static_assert(sizeof(TTransform<float>) == 48, "three four-lane float registers");
}
