// FArchive: two-way binary serialization; the same code writes (saving) and reads (loading) a value.
#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Math/TransformVectorized.h"
#include "Math/Vector2D.h"
#include "UObject/NameTypes.h"

#include <type_traits>

class FArchive
{
public:
	virtual ~FArchive() = default;

	virtual void Serialize(void* Data, int64 Length) = 0;

	[[nodiscard]] bool IsLoading() const { return bIsLoading; }
	[[nodiscard]] bool IsSaving() const { return !bIsLoading; }
	[[nodiscard]] bool IsError() const { return bIsError; }
	void SetError() { bIsError = true; }

	template <typename T, std::enable_if_t<std::is_arithmetic_v<T> || std::is_enum_v<T>, int> = 0>
	friend FArchive& operator<<(FArchive& Ar, T& Value)
	{
		Ar.Serialize(&Value, sizeof(T));
		return Ar;
	}

	CORE_API friend FArchive& operator<<(FArchive& Ar, FString& Value);
	CORE_API friend FArchive& operator<<(FArchive& Ar, FName& Value);

	template <typename T>
	friend FArchive& operator<<(FArchive& Ar, TArray<T>& Array)
	{
		int32 Num = Array.Num();
		Ar << Num;
		if (Ar.IsLoading())
		{
			if (Num < 0)
			{
				Ar.SetError();
				return Ar;
			}
			Array.Reset(Num);
			Array.AddDefaulted(Num);
		}
		for (T& Element : Array)
		{
			Ar << Element;
		}
		return Ar;
	}

	template <typename T>
	friend FArchive& operator<<(FArchive& Ar, UE::Math::TVector<T>& V)
	{
		return Ar << V.X << V.Y << V.Z;
	}

	template <typename T>
	friend FArchive& operator<<(FArchive& Ar, UE::Math::TVector2<T>& V)
	{
		return Ar << V.X << V.Y;
	}

	template <typename T>
	friend FArchive& operator<<(FArchive& Ar, UE::Math::TQuat<T>& Q)
	{
		return Ar << Q.X << Q.Y << Q.Z << Q.W;
	}

	// All twelve lanes travel, so that a transform comes back bit for bit.
	template <typename T>
	friend FArchive& operator<<(FArchive& Ar, UE::Math::TTransform<T>& Transform)
	{
		Ar.Serialize(&Transform, sizeof(Transform));
		return Ar;
	}

protected:
	bool bIsLoading = false;
	bool bIsError = false;
};
