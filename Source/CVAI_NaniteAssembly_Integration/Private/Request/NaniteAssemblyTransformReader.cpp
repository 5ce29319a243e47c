#include "Request/NaniteAssemblyTransformReader.h"

#include "Request/NaniteAssemblyLuaAccess.h"
#include "Request/NaniteAssemblyTableReaders.h"

namespace
{
	const ANSICHAR* const TransformKeys[] = { "location", "translation", "rotation", "scale" };
	const ANSICHAR* const VectorKeys[] = { "x", "y", "z" };
	const ANSICHAR* const RotationKeys[] = { "pitch", "yaw", "roll", "x", "y", "z" };
	const ANSICHAR* const RotatorKeys[] = { "pitch", "yaw", "roll" };
	const double Zeros[] = { 0.0, 0.0, 0.0 };
	const double Ones[] = { 1.0, 1.0, 1.0 };

	bool ReadVectorTable(const sol::stack_object& Table, const FNaniteAssemblyContextPath& Path, const double* Defaults, FVector& OutVector, FString& OutError)
	{
		double Values[3];
		if (!CheckOnlyKnownKeys(Table, VectorKeys, Path, OutError) || !ReadNumberFields(Table, VectorKeys, 3, Values, Defaults, Path, OutError))
		{
			return false;
		}
		OutVector = FVector(Values[0], Values[1], Values[2]);
		return true;
	}

	// Presence means a value of any type other than nil; its type is judged when it is read.
	bool AnyPresent(lua_State* L, int Index, const ANSICHAR* const* Keys)
	{
		for (int32 KeyIndex = 0; KeyIndex < 3; ++KeyIndex)
		{
			const int Type = NaniteAssemblyPushField(L, Index, Keys[KeyIndex]);
			lua_pop(L, 1);
			if (Type != LUA_TNIL)
			{
				return true;
			}
		}
		return false;
	}

	bool ReadLocation(lua_State* L, int TransformIndex, const FNaniteAssemblyContextPath& Path, FVector& OutLocation, FString& OutError)
	{
		FNaniteAssemblyStackGuard Guard(L);
		// "translation" is only an alias: it is looked at when "location" is nil, and named as location.
		int Type = NaniteAssemblyPushField(L, TransformIndex, "location");
		if (Type == LUA_TNIL)
		{
			lua_pop(L, 1);
			Type = NaniteAssemblyPushField(L, TransformIndex, "translation");
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
		return ReadVectorTable(sol::stack_object(L, -1), LocationPath, Zeros, OutLocation, OutError);
	}

	bool ReadRotation(lua_State* L, int TransformIndex, const FNaniteAssemblyContextPath& Path, FRotator& OutRotation, FString& OutError)
	{
		FNaniteAssemblyStackGuard Guard(L);
		const int Type = NaniteAssemblyPushField(L, TransformIndex, "rotation");
		if (Type == LUA_TNIL)
		{
			return true;
		}
		if (Type != LUA_TTABLE)
		{
			OutError = Path.ToString() + TEXT(": 'rotation' must be a table {pitch,yaw,roll} or Euler {x,y,z}");
			return false;
		}
		const sol::stack_object Rotation(L, -1);
		const FNaniteAssemblyContextPath RotationPath(Path, TEXT(".rotation"));
		if (!CheckOnlyKnownKeys(Rotation, RotationKeys, RotationPath, OutError))
		{
			return false;
		}
		double Values[3];
		if (!AnyPresent(L, Rotation.stack_index(), VectorKeys))
		{
			if (!ReadNumberFields(Rotation, RotatorKeys, 3, Values, Zeros, RotationPath, OutError))
			{
				return false;
			}
			OutRotation = FRotator(Values[0], Values[1], Values[2]);
			return true;
		}
		if (AnyPresent(L, Rotation.stack_index(), RotatorKeys))
		{
			OutError = RotationPath.ToString() + TEXT(": use either {pitch,yaw,roll} or Euler {x,y,z}, not both");
			return false;
		}
		if (!ReadNumberFields(Rotation, VectorKeys, 3, Values, Zeros, RotationPath, OutError))
		{
			return false;
		}
		// Euler x is roll, y is pitch, z is yaw.
		OutRotation = FRotator::MakeFromEuler(FVector(Values[0], Values[1], Values[2]));
		return true;
	}

	bool ReadScale(lua_State* L, int TransformIndex, const FNaniteAssemblyContextPath& Path, FVector& OutScale, FString& OutError)
	{
		FNaniteAssemblyStackGuard Guard(L);
		const int Type = NaniteAssemblyPushField(L, TransformIndex, "scale");
		if (Type == LUA_TNIL)
		{
			return true;
		}
		if (Type == LUA_TNUMBER)
		{
			const double Uniform = (double)lua_tonumberx(L, -1, nullptr);
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
		return ReadVectorTable(sol::stack_object(L, -1), ScalePath, Ones, OutScale, OutError);
	}
}

bool ReadTransform(const sol::stack_object& Value, const FNaniteAssemblyContextPath& ContextPath, FTransform& OutTransform, FString& OutError)
{
	lua_State* L = Value.lua_state();
	const int Index = Value.stack_index();
	if (lua_type(L, Index) != LUA_TTABLE)
	{
		OutError = ContextPath.ToString() + TEXT(": each transform must be a table {location=,rotation=,scale=}");
		return false;
	}
	if (!CheckOnlyKnownKeys(Value, TransformKeys, ContextPath, OutError))
	{
		return false;
	}
	FVector Location = FVector::ZeroVector;
	FRotator Rotation = FRotator::ZeroRotator;
	FVector Scale = FVector::OneVector;
	if (!ReadLocation(L, Index, ContextPath, Location, OutError) || !ReadRotation(L, Index, ContextPath, Rotation, OutError)
		|| !ReadScale(L, Index, ContextPath, Scale, OutError))
	{
		return false;
	}
	OutTransform = FTransform(Rotation.Quaternion(), Location, Scale);
	return true;
}
