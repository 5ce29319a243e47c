// The transaction that Modify records into; the editor's transaction buffer provides it.
#pragma once

#include "HAL/Platform.h"

class UObject;

class ITransaction
{
public:
	virtual ~ITransaction() = default;

	// Records the object's state before its first change in this transaction.
	virtual void SaveObject(UObject* Object) = 0;
};
