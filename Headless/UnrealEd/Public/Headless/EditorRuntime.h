// Harness-only: starting and stopping the editor, its tick, and what a test needs to observe of it.
#pragma once

#include "Containers/UnrealString.h"
#include "Internationalization/Text.h"

class UTransBuffer;

namespace UE::Headless
{
	// What the harness reads of the undo buffer beyond the engine's interface.
	struct UNREALED_API FTransBufferAccess
	{
		static int32 GetActiveCount(const UTransBuffer& Buffer);
		static FText GetTransactionTitle(const UTransBuffer& Buffer, int32 Index);
	};

	// Forgets the objects of an earlier run, creates GEditor with an empty undo buffer and makes the asset
	// registry available.
	UNREALED_API void StartEditorRuntime();
	// Finishes pending builds and removes GEditor.
	UNREALED_API void StopEditorRuntime();

	// One editor tick.
	UNREALED_API void TickEditor();

	// Takes GEditor away (or gives it back) for a run, as a build without an editor would see it.
	UNREALED_API void SetEditorAvailable(bool bAvailable);

	struct FSavedPackageNotification
	{
		FString PackageName;
		FString Filename;
		// Transactions open when the notification fired.
		int32 TransactionDepth = 0;
	};

	// Every package-saved notification since the runtime started, in order.
	UNREALED_API const TArray<FSavedPackageNotification>& GetSavedPackageNotifications();

	// Open transactions now (nested ones count).
	UNREALED_API int32 GetTransactionDepth();

	// The titles of the transactions that Undo would take back, oldest first.
	UNREALED_API TArray<FString> GetUndoHistory();
}
