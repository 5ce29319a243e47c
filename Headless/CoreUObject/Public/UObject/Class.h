// UStruct and UClass: the reflected class of an object.
#pragma once

#include "UObject/Object.h"


class UField : public UObject
{
public:
	static COREUOBJECT_API UClass* StaticClass();
};

class UStruct : public UField
{
public:
	static COREUOBJECT_API UClass* StaticClass();

	[[nodiscard]] UStruct* GetSuperStruct() const { return SuperStruct; }

	// True for this struct and everything derived from it; false for null.
	[[nodiscard]] COREUOBJECT_API bool IsChildOf(const UStruct* SomeBase) const;

	template <typename T>
	[[nodiscard]] bool IsChildOf() const
	{
		return IsChildOf(T::StaticClass());
	}

private:
	friend struct UE::Headless::Private::FObjectAccess;

	UStruct* SuperStruct = nullptr;
};

class UClass : public UStruct
{
public:
	static COREUOBJECT_API UClass* StaticClass();

	[[nodiscard]] UClass* GetSuperClass() const { return (UClass*)GetSuperStruct(); }
	[[nodiscard]] bool HasAnyClassFlags(EClassFlags FlagsToCheck) const { return (ClassFlags & FlagsToCheck) != 0; }
	[[nodiscard]] EClassFlags GetClassFlags() const { return ClassFlags; }

	// The number the last generated unique object name of this class took; it only grows.
	int32 ClassUnique = 0;

private:
	friend struct UE::Headless::Private::FObjectAccess;

	EClassFlags ClassFlags = CLASS_None;
	UE::Headless::Private::FConstructObjectFunction ConstructFunction = nullptr;
};
