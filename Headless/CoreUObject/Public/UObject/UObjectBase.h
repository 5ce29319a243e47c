// The lowest layer of every object: class, name, outer and flags.
#pragma once

#include "UObject/NameTypes.h"
#include "UObject/ObjectMacros.h"

class UClass;
class UObject;
class UPackage;

class UObjectBase
{
public:
	virtual ~UObjectBase() = default;

	[[nodiscard]] UClass* GetClass() const { return ClassPrivate; }
	[[nodiscard]] UObject* GetOuter() const { return OuterPrivate; }
	[[nodiscard]] FName GetFName() const { return NamePrivate; }
	[[nodiscard]] EObjectFlags GetFlags() const { return ObjectFlags; }

protected:
	UObjectBase() = default;
	UObjectBase(const UObjectBase&) = delete;
	UObjectBase& operator=(const UObjectBase&) = delete;

private:
	friend class UObjectBaseUtility;
	friend struct UE::Headless::Private::FObjectAccess;

	EObjectFlags ObjectFlags = RF_NoFlags;
	EInternalObjectFlags InternalFlags = EInternalObjectFlags::None;

	UClass* ClassPrivate = nullptr;
	FName NamePrivate;
	UObject* OuterPrivate = nullptr;
};
