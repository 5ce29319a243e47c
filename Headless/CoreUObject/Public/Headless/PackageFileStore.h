// Harness-only: package files on disk. A save is written as the engine writes one: into a temporary file beside
// the target (<file>.tmp-<pid>), flushed to the disk, renamed over the target, and the folder flushed, so that a
// failure at any step leaves the earlier file whole.
#pragma once

#include "Containers/UnrealString.h"

#include <memory>

namespace UE::Headless
{
	class COREUOBJECT_API FSafeFileWriter
	{
	public:
		FSafeFileWriter();
		// Removes the temporary file unless Commit moved it into place.
		~FSafeFileWriter();
		FSafeFileWriter(const FSafeFileWriter&) = delete;
		FSafeFileWriter& operator=(const FSafeFileWriter&) = delete;

		// Refuses a read-only target, creates the target's folders and the temporary file.
		bool Open(const FString& Filename, FString& OutError);

		// Buffered; the first failure is kept and reported by Commit.
		void Write(const void* Data, int64 Size);

		bool Commit(FString& OutError);

	private:
		bool FlushBuffer();
		void Discard();

		struct FState;
		std::unique_ptr<FState> State;
	};

	// False, with the operating system's reason, when a save could not replace Filename: it is read-only
	// (which a rename would otherwise ignore). A file that does not exist can be replaced.
	COREUOBJECT_API bool CanReplaceFile(const FString& Filename, FString& OutError);

	// A whole file, mapped read-only: a large package is read straight from the page cache, without a copy.
	class COREUOBJECT_API FMappedFile
	{
	public:
		FMappedFile() = default;
		~FMappedFile();
		FMappedFile(const FMappedFile&) = delete;
		FMappedFile& operator=(const FMappedFile&) = delete;

		bool Open(const FString& Filename, FString& OutError);
		[[nodiscard]] const uint8* GetData() const { return Data; }
		[[nodiscard]] int64 GetSize() const { return Size; }

	private:
		const uint8* Data = nullptr;
		int64 Size = 0;
	};

	// The existing file or folder whose path equals Path ignoring letter case, else empty.
	COREUOBJECT_API FString FindPathIgnoringCase(const FString& Path);

	// Removes the temporary files (*.tmp-<pid>) under Dir that a process that no longer runs left behind, as a
	// save interrupted by a crash or a power cut does; those of running processes are still being written.
	COREUOBJECT_API void RemoveStaleTemporaryFiles(const FString& Dir);
}
