// Harness-only: the end of a process that ran out of memory, as the engine's out-of-memory handler ends it. One fatal
// message says what the process was doing ("cvai: out of memory while saving /Game/Props/SM_Fence"), the temporary
// files of unfinished writes are removed, and the process ends at once with a status of its own, so every file on
// disk stays as it was. Nothing on that road allocates: the texts are kept ready in the scopes below.
#pragma once

#include "Containers/UnrealString.h"

namespace UE::Headless
{
	// Makes every allocation that operator new cannot serve end the process through ExitOutOfMemory, whose message
	// starts with ProgramName (kept, not copied) and whose status is ExitStatus. Until then a fatal exit is named
	// after the executable and ends with status 1.
	CORE_API void InstallOutOfMemoryHandler(const char* ProgramName, int ExitStatus);

	// Flushes standard output, writes "<program>: out of memory[ while <activity>]" to standard error, removes the
	// registered temporary files and ends the process without running destructors or exit handlers.
	[[noreturn]] CORE_API void ExitOutOfMemory();

	// Names what the process is doing while the scope lasts: "running Scripts/Fence.lua", "saving /Game/Props/SM_Fence".
	// Scopes nest, and the innermost one names the activity. The editor runs on one thread, whose scopes these are.
	class CORE_API FScopedActivity
	{
	public:
		explicit FScopedActivity(const FString& Activity);
		explicit FScopedActivity(const char* Utf8Activity);
		~FScopedActivity();
		FScopedActivity(const FScopedActivity&) = delete;
		FScopedActivity& operator=(const FScopedActivity&) = delete;

	private:
		friend void ExitOutOfMemory();

		FScopedActivity* Outer = nullptr;
		// Longer texts are cut.
		char Text[256] = {};
	};

	// A file that a fatal exit removes while the scope lasts: the temporary file of a write not yet moved into place.
	class CORE_API FScopedTemporaryFile
	{
	public:
		explicit FScopedTemporaryFile(const FString& Path);
		explicit FScopedTemporaryFile(const char* Utf8Path);
		~FScopedTemporaryFile();
		FScopedTemporaryFile(const FScopedTemporaryFile&) = delete;
		FScopedTemporaryFile& operator=(const FScopedTemporaryFile&) = delete;

	private:
		friend void ExitOutOfMemory();

		FScopedTemporaryFile* Outer = nullptr;
		// A path too long for it is not registered: removing a file of a cut name could hit another file.
		char Path[4096] = {};
	};
}
