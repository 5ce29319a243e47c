// Names, paths, flags and ownership queries of an object.
#pragma once

#include "Containers/UnrealString.h"
#include "Misc/AssertionMacros.h"
#include "UObject/UObjectBase.h"

class UObjectBaseUtility : public UObjectBase
{
public:
	void SetFlags(EObjectFlags NewFlags) { ObjectFlags |= NewFlags; }
	void ClearFlags(EObjectFlags FlagsToClear) { ObjectFlags &= ~FlagsToClear; }
	[[nodiscard]] bool HasAnyFlags(EObjectFlags FlagsToCheck) const { return (ObjectFlags & FlagsToCheck) != 0; }
	[[nodiscard]] bool HasAllFlags(EObjectFlags FlagsToCheck) const { return (ObjectFlags & FlagsToCheck) == FlagsToCheck; }

	// Garbage objects are hidden from every look-up by name or path.
	void MarkAsGarbage()
	{
		check(!IsRooted());
		InternalFlags |= EInternalObjectFlags::Garbage;
	}
	void ClearGarbage() { InternalFlags &= ~EInternalObjectFlags::Garbage; }
	[[nodiscard]] bool HasAnyInternalFlags(EInternalObjectFlags FlagsToCheck) const { return EnumHasAnyFlags(InternalFlags, FlagsToCheck); }

	[[nodiscard]] bool IsRooted() const { return EnumHasAnyFlags(InternalFlags, EInternalObjectFlags::RootSet); }
	void AddToRoot() { InternalFlags |= EInternalObjectFlags::RootSet; }
	void RemoveFromRoot() { InternalFlags &= ~EInternalObjectFlags::RootSet; }

	[[nodiscard]] FString GetName() const { return GetFName().ToString(); }
	void GetName(FString& Result) const { Result = GetName(); }

	// "/Package/Path.Asset", and ":Subobject" below an asset.
	[[nodiscard]] COREUOBJECT_API FString GetPathName(const UObject* StopOuter = nullptr) const;
	COREUOBJECT_API void GetPathName(const UObject* StopOuter, FString& ResultString) const;
	// "Class /Package/Path.Asset".
	[[nodiscard]] COREUOBJECT_API FString GetFullName(const UObject* StopOuter = nullptr) const;

	[[nodiscard]] COREUOBJECT_API UPackage* GetOutermost() const;
	[[nodiscard]] COREUOBJECT_API UPackage* GetPackage() const;
	[[nodiscard]] COREUOBJECT_API UObject* GetOutermostObject() const;

	// Marks the owning package dirty where the editor allows it; true when the package is (or stays) dirty.
	COREUOBJECT_API bool MarkPackageDirty() const;

	[[nodiscard]] COREUOBJECT_API bool IsA(const UClass* SomeBase) const;

	template <typename OtherClassType>
	[[nodiscard]] bool IsA() const
	{
		return IsA(OtherClassType::StaticClass());
	}
};
