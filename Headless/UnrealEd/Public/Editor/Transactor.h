// The editor's transaction system, as an interface: what Undo and Redo move through.
#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"
#include "UObject/ObjectMacros.h"

class UTransactor : public UObject
{
	DECLARE_CLASS(UTransactor, UObject, CLASS_Abstract, CASTCLASS_None, TEXT("/Script/UnrealEd"), UNREALED_API)

public:
	// Opens a transaction, or nests into the open one; returns the number that were open before.
	virtual int32 Begin(const TCHAR* SessionContext, const FText& Description) PURE_VIRTUAL(UTransactor::Begin, return 0;);
	// Closes one level; returns the number that were open when it was called (1: this closed the transaction).
	virtual int32 End() PURE_VIRTUAL(UTransactor::End, return 0;);
	// Throws the open transaction away without reverting any object.
	virtual void Cancel(int32 StartIndex = 0) PURE_VIRTUAL(UTransactor::Cancel, );
	// Discards every transaction: nothing can be undone or redone afterwards.
	virtual void Reset(const FText& Reason) PURE_VIRTUAL(UTransactor::Reset, );
	virtual bool CanUndo(FText* Text = nullptr) PURE_VIRTUAL(UTransactor::CanUndo, return false;);
	virtual bool CanRedo(FText* Text = nullptr) PURE_VIRTUAL(UTransactor::CanRedo, return false;);
	[[nodiscard]] virtual int32 GetQueueLength() const PURE_VIRTUAL(UTransactor::GetQueueLength, return 0;);
	[[nodiscard]] virtual int32 GetUndoCount() const PURE_VIRTUAL(UTransactor::GetUndoCount, return 0;);
	virtual bool Undo(bool bCanRedo = true) PURE_VIRTUAL(UTransactor::Undo, return false;);
	virtual bool Redo() PURE_VIRTUAL(UTransactor::Redo, return false;);
	virtual bool IsActive() PURE_VIRTUAL(UTransactor::IsActive, return false;);
};
