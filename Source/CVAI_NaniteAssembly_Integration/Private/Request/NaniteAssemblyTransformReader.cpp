#include "Request/NaniteAssemblyTransformReader.h"

#include "Request/NaniteAssemblyLuaAccess.h"
#include "Request/NaniteAssemblyTableReaders.h"

namespace
{
	const ANSICHAR* const TransformKeys[] = { "location", "translation", "rotation", "scale" };
	const ANSICHAR* const VectorKeys[] = { "x", "y", "z" };
	const ANSICHAR* const RotationKeys[] = { "pitch", "yaw", "roll", "x", "y", "z" };
	const double Zeros[] = { 0.0, 0.0, 0.0 };
	const double Ones[] = { 1.0, 1.0, 1.0 };

	// Positions in TransformKeys.
	enum class ETransformKey : int32
	{
		Location,
		Translation,
		Rotation,
		Scale,
	};

	constexpr int32 KeyIndex(ETransformKey Key)
	{
		return (int32)Key;
	}

	bool ReadVectorTable(lua_State* L, int TableIndex, const FNaniteAssemblyContextPath& Path, const double* Defaults, FVector& OutVector, FString& OutError)
	{
		FNaniteAssemblyNumbers Numbers;
		double Values[3];
		if (!Numbers.Gather(sol::stack_object(L, TableIndex), VectorKeys, Path, OutError) || !Numbers.Read(0, VectorKeys, 3, Defaults, Values, Path, OutError))
		{
			return false;
		}
		OutVector = FVector(Values[0], Values[1], Values[2]);
		return true;
	}

	// "translation" is only an alias: it is looked at when "location" is nil, and named as location.
	bool ReadLocation(lua_State* L, const FNaniteAssemblyFields& Fields, const FNaniteAssemblyContextPath& Path, FVector& OutLocation, FString& OutError)
	{
		int32 Key = KeyIndex(ETransformKey::Location);
		int Type = Fields.Fetch(Key);
		if (Type == LUA_TNIL)
		{
			Key = KeyIndex(ETransformKey::Translation);
			Type = Fields.Fetch(Key);
		}
		if (Type == LUA_TNIL)
		{
			return true;
		}
		if (Type != LUA_TTABLE)
		{
			OutError = Path.ToString() + TEXT(": 'location' must be a table {x,y,z}");
			return false;
		}
		const FNaniteAssemblyContextPath LocationPath(Path, TEXT(".location"));
		return ReadVectorTable(L, Fields.Slot(Key), LocationPath, Zeros, OutLocation, OutError);
	}

	bool ReadRotation(lua_State* L, const FNaniteAssemblyFields& Fields, const FNaniteAssemblyContextPath& Path, FRotator& OutRotation, FString& OutError)
	{
		const int Type = Fields.Fetch(KeyIndex(ETransformKey::Rotation));
		if (Type == LUA_TNIL)
		{
			return true;
		}
		if (Type != LUA_TTABLE)
		{
			OutError = Path.ToString() + TEXT(": 'rotation' must be a table {pitch,yaw,roll} or Euler {x,y,z}");
			return false;
		}
		const FNaniteAssemblyContextPath RotationPath(Path, TEXT(".rotation"));
		FNaniteAssemblyNumbers Angles;
		if (!Angles.Gather(sol::stack_object(L, Fields.Slot(KeyIndex(ETransformKey::Rotation))), RotationKeys, RotationPath, OutError))
		{
			return false;
		}
		// Presence is any value but nil; its type is judged when it is read.
		bool bRotatorForm = false;
		bool bEulerForm = false;
		for (int32 Key = 0; Key < 3; ++Key)
		{
			bRotatorForm |= Angles.IsPresent(Key);
		}
		for (int32 Key = 3; Key < 6; ++Key)
		{
			bEulerForm |= Angles.IsPresent(Key);
		}
		double Values[3];
		if (!bEulerForm)
		{
			if (!Angles.Read(0, RotationKeys, 3, Zeros, Values, RotationPath, OutError))
			{
				return false;
			}
			OutRotation = FRotator(Values[0], Values[1], Values[2]);
			return true;
		}
		if (bRotatorForm)
		{
			OutError = RotationPath.ToString() + TEXT(": use either {pitch,yaw,roll} or Euler {x,y,z}, not both");
			return false;
		}
		if (!Angles.Read(3, VectorKeys, 3, Zeros, Values, RotationPath, OutError))
		{
			return false;
		}
		// Euler x is roll, y is pitch, z is yaw.
		OutRotation = FRotator::MakeFromEuler(FVector(Values[0], Values[1], Values[2]));
		return true;
	}

	bool ReadScale(lua_State* L, const FNaniteAssemblyFields& Fields, const FNaniteAssemblyContextPath& Path, FVector& OutScale, FString& OutError)
	{
		const int Type = Fields.Fetch(KeyIndex(ETransformKey::Scale));
		if (Type == LUA_TNIL)
		{
			return true;
		}
		if (Type == LUA_TNUMBER)
		{
			const double Uniform = (double)lua_tonumberx(L, Fields.Slot(KeyIndex(ETransformKey::Scale)), nullptr);
			if (!FMath::IsFinite(Uniform))
			{
				OutError = Path.ToString() + TEXT(": 'scale' must be finite");
				return false;
			}
			OutScale = FVector(Uniform, Uniform, Uniform);
			return true;
		}
		if (Type != LUA_TTABLE)
		{
			OutError = Path.ToString() + TEXT(": 'scale' must be a number or a table {x,y,z}");
			return false;
		}
		const FNaniteAssemblyContextPath ScalePath(Path, TEXT(".scale"));
		return ReadVectorTable(L, Fields.Slot(KeyIndex(ETransformKey::Scale)), ScalePath, Ones, OutScale, OutError);
	}
}

bool ReadTransform(const sol::stack_object& Value, const FNaniteAssemblyContextPath& ContextPath, FTransform& OutTransform, FString& OutError)
{
	lua_State* L = Value.lua_state();
	if (lua_type(L, Value.stack_index()) != LUA_TTABLE)
	{
		OutError = ContextPath.ToString() + TEXT(": each transform must be a table {location=,rotation=,scale=}");
		return false;
	}
	FNaniteAssemblyStackGuard Guard(L);
	FNaniteAssemblyFields Fields;
	if (!Fields.Gather(Value, TransformKeys, ContextPath, OutError))
	{
		return false;
	}
	// Faults are reported in the order location, rotation, scale.
	FVector Location = FVector::ZeroVector;
	FRotator Rotation = FRotator::ZeroRotator;
	FVector Scale = FVector::OneVector;
	if (!ReadLocation(L, Fields, ContextPath, Location, OutError) || !ReadRotation(L, Fields, ContextPath, Rotation, OutError)
		|| !ReadScale(L, Fields, ContextPath, Scale, OutError))
	{
		return false;
	}
	OutTransform = FTransform(Rotation.Quaternion(), Location, Scale);
	return true;
}
