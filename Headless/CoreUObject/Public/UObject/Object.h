// UObject: the base of every engine object.
#pragma once

#include "UObject/UObjectBaseUtility.h"

class FArchive;

class UObject : public UObjectBaseUtility
{
	DECLARE_CLASS(UObject, UObject, CLASS_None, CASTCLASS_None, TEXT("/Script/CoreUObject"), COREUOBJECT_API)

public:
	UObject() = default;
	COREUOBJECT_API ~UObject() override;

	// Records the object's state into the open transaction when it is transactional, and dirties its
	// package when asked; true when the transaction recorded it.
	COREUOBJECT_API virtual bool Modify(bool bAlwaysMarkDirty = true);

	// The object's persistent state, both ways: what a transaction records and restores.
	COREUOBJECT_API virtual void Serialize(FArchive& Ar);

	COREUOBJECT_API virtual void PostLoad();
	COREUOBJECT_API virtual void PostEditChange();
	COREUOBJECT_API virtual void PreEditUndo();
	COREUOBJECT_API virtual void PostEditUndo();

	// A public, standalone object directly inside a package, as asset tools count assets.
	[[nodiscard]] COREUOBJECT_API virtual bool IsAsset() const;
};

[[nodiscard]] COREUOBJECT_API bool IsValid(const UObject* Test);
