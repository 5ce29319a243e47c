#include "Headless/PackageFileStore.h"

#include "Headless/FatalExit.h"
#include "Headless/Faults.h"
#include "Headless/StringUtils.h"
#include "Logging/LogMacros.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

DEFINE_LOG_CATEGORY_STATIC(LogPackageFileStore, Log, All);

namespace
{
	namespace fs = std::filesystem;

	constexpr int64 WriteBufferSize = 1 << 20;

	FString Reason(int Error)
	{
		return UE::Headless::FromUtf8(std::strerror(Error));
	}

	// Where a new file goes: every existing folder along the way is reused whatever its letter case.
	fs::path ResolveWritePath(const FString& Filename)
	{
		const fs::path Wanted(UE::Headless::ToUtf8(Filename));
		fs::path Result = Wanted.root_path();
		for (const fs::path& Part : Wanted.relative_path())
		{
			const FString Candidate = UE::Headless::FindPathIgnoringCase(UE::Headless::FromUtf8((Result / Part).string()));
			Result = Candidate.IsEmpty() ? Result / Part : fs::path(UE::Headless::ToUtf8(Candidate));
		}
		return Result;
	}

	// A rename needs the folder's entry written to the disk too, or a power cut can bring the old file back.
	bool SyncFolder(const fs::path& Folder)
	{
		const int Descriptor = open(Folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
		if (Descriptor < 0)
		{
			return false;
		}
		const bool bSynced = fsync(Descriptor) == 0;
		close(Descriptor);
		return bSynced;
	}

	bool IsProcessRunning(pid_t Process)
	{
		return Process == getpid() || kill(Process, 0) == 0 || errno == EPERM;
	}

	// The process id of a temporary file's name, "<file>.tmp-<pid>"; 0 when the name is not one.
	pid_t TemporaryFileOwner(const std::string& Name)
	{
		const size_t Marker = Name.rfind(".tmp-");
		if (Marker == std::string::npos || Marker + 5 == Name.size() || Name.size() - Marker > 5 + 9)
		{
			return 0;
		}
		pid_t Process = 0;
		for (size_t Index = Marker + 5; Index < Name.size(); ++Index)
		{
			if (Name[Index] < '0' || Name[Index] > '9')
			{
				return 0;
			}
			Process = Process * 10 + (Name[Index] - '0');
		}
		return Process;
	}
}

namespace UE::Headless
{
	struct FSafeFileWriter::FState
	{
		fs::path Target;
		fs::path Temporary;
		// Removes the temporary file if the process runs out of memory before the write is committed or discarded.
		std::unique_ptr<FScopedTemporaryFile> FatalExitCleanup;
		int Descriptor = -1;
		std::unique_ptr<uint8[]> Buffer;
		int64 Buffered = 0;
		// The first failure: the operating system's error number, or a reason of its own (an injected fault).
		int Error = 0;
		FString InjectedReason;
		bool bCommitted = false;
	};

	FSafeFileWriter::FSafeFileWriter()
		: State(std::make_unique<FState>())
	{
	}

	FSafeFileWriter::~FSafeFileWriter()
	{
		Discard();
	}

	bool FSafeFileWriter::Open(const FString& Filename, FString& OutError)
	{
		if (!CanReplaceFile(Filename, OutError))
		{
			return false;
		}
		State->Target = ResolveWritePath(Filename);
		std::error_code Error;
		// A bare file name lies in the current folder, which exists.
		if (State->Target.has_parent_path())
		{
			fs::create_directories(State->Target.parent_path(), Error);
		}
		if (Error)
		{
			OutError = FString::Printf(TEXT("cannot create the folder of '%s': %s"), *Filename, *FromUtf8(Error.message()));
			return false;
		}
		State->Temporary = State->Target.string() + ".tmp-" + std::to_string(getpid());
		State->Descriptor = open(State->Temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
		if (State->Descriptor < 0)
		{
			OutError = FString::Printf(TEXT("cannot create '%s': %s"), *FromUtf8(State->Temporary.string()), *Reason(errno));
			return false;
		}
		State->FatalExitCleanup = std::make_unique<FScopedTemporaryFile>(State->Temporary.c_str());
		State->Buffer = std::make_unique<uint8[]>(WriteBufferSize);
		return true;
	}

	void FSafeFileWriter::Write(const void* Data, int64 Size)
	{
		if (State->Error != 0 || State->Descriptor < 0)
		{
			return;
		}
		const uint8* Bytes = static_cast<const uint8*>(Data);
		while (Size > 0)
		{
			if (State->Buffered == WriteBufferSize && !FlushBuffer())
			{
				return;
			}
			const int64 Taken = std::min(Size, WriteBufferSize - State->Buffered);
			std::memcpy(State->Buffer.get() + State->Buffered, Bytes, (size_t)Taken);
			State->Buffered += Taken;
			Bytes += Taken;
			Size -= Taken;
		}
	}

	bool FSafeFileWriter::FlushBuffer()
	{
		// A write that fails part-way (a file size limit, a full disk) reports why on the next call.
		const uint8* Bytes = State->Buffer.get();
		int64 Remaining = State->Buffered;
		while (Remaining > 0)
		{
			const ssize_t Written = write(State->Descriptor, Bytes, (size_t)Remaining);
			if (Written < 0 && errno == EINTR)
			{
				continue;
			}
			if (Written <= 0)
			{
				State->Error = Written < 0 ? errno : ENOSPC;
				return false;
			}
			Bytes += Written;
			Remaining -= Written;
		}
		State->Buffered = 0;
		return true;
	}

	bool FSafeFileWriter::Commit(FString& OutError)
	{
		if (State->Descriptor < 0)
		{
			OutError = TEXT("the file was not opened");
			return false;
		}
		const FString TemporaryName = FromUtf8(State->Temporary.string());
		if (State->Error == 0 && ConsumeFault(TEXT("WritePackageFile"), &State->InjectedReason))
		{
			State->Error = ENOSPC;
		}
		if (State->Error == 0 && FlushBuffer() && fsync(State->Descriptor) != 0)
		{
			State->Error = errno;
		}
		if (State->Error != 0)
		{
			OutError = FString::Printf(TEXT("cannot write '%s': %s"), *TemporaryName,
				State->InjectedReason.IsEmpty() ? *Reason(State->Error) : *State->InjectedReason);
			Discard();
			return false;
		}
		const int Descriptor = State->Descriptor;
		State->Descriptor = -1;
		if (close(Descriptor) != 0)
		{
			OutError = FString::Printf(TEXT("cannot write '%s': %s"), *TemporaryName, *Reason(errno));
			Discard();
			return false;
		}
		if (rename(State->Temporary.c_str(), State->Target.c_str()) != 0)
		{
			OutError = FString::Printf(TEXT("cannot move '%s' over '%s': %s"), *TemporaryName, *FromUtf8(State->Target.string()), *Reason(errno));
			Discard();
			return false;
		}
		State->bCommitted = true;
		State->FatalExitCleanup.reset();
		if (!SyncFolder(State->Target.parent_path()))
		{
			// The new file is in place and readable; only its survival of a power cut is in doubt.
			UE_LOG(LogPackageFileStore, Warning, TEXT("The folder of '%s' could not be flushed to the disk: %s"), *FromUtf8(State->Target.string()),
				*Reason(errno));
		}
		return true;
	}

	void FSafeFileWriter::Discard()
	{
		if (State->Descriptor >= 0)
		{
			close(State->Descriptor);
			State->Descriptor = -1;
		}
		if (!State->bCommitted && !State->Temporary.empty())
		{
			unlink(State->Temporary.c_str());
			State->Temporary.clear();
		}
		State->FatalExitCleanup.reset();
	}

	bool CanReplaceFile(const FString& Filename, FString& OutError)
	{
		const FString Existing = FindPathIgnoringCase(Filename);
		struct stat Status;
		if (Existing.IsEmpty() || stat(ToUtf8(Existing).c_str(), &Status) != 0 || !S_ISREG(Status.st_mode))
		{
			return true;
		}
		// Checked on the mode rather than with access(), which lets a superuser write anything.
		if ((Status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
		{
			OutError = FString::Printf(TEXT("cannot replace '%s', which is read-only: %s"), *Existing, *Reason(EACCES));
			return false;
		}
		return true;
	}

	FMappedFile::~FMappedFile()
	{
		if (Size > 0)
		{
			munmap(const_cast<uint8*>(Data), (size_t)Size);
		}
	}

	bool FMappedFile::Open(const FString& Filename, FString& OutError)
	{
		const int Descriptor = open(ToUtf8(Filename).c_str(), O_RDONLY | O_CLOEXEC);
		struct stat Status;
		int Error = 0;
		if (Descriptor < 0 || fstat(Descriptor, &Status) != 0)
		{
			Error = errno;
		}
		else if (!S_ISREG(Status.st_mode))
		{
			Error = EISDIR;
		}
		else if (Status.st_size > 0)
		{
			void* Mapping = mmap(nullptr, (size_t)Status.st_size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, Descriptor, 0);
			if (Mapping == MAP_FAILED)
			{
				Error = errno;
			}
			else
			{
				Data = static_cast<const uint8*>(Mapping);
				Size = (int64)Status.st_size;
			}
		}
		if (Descriptor >= 0)
		{
			close(Descriptor);
		}
		if (Error != 0)
		{
			OutError = FString::Printf(TEXT("cannot open package file '%s': %s"), *Filename, *Reason(Error));
			return false;
		}
		return true;
	}

	FString FindPathIgnoringCase(const FString& Path)
	{
		const fs::path Wanted(ToUtf8(Path));
		std::error_code Error;
		if (fs::exists(Wanted, Error))
		{
			return Path;
		}
		fs::path Result = Wanted.root_path();
		for (const fs::path& Part : Wanted.relative_path())
		{
			if (Part == "." || Part == "..")
			{
				Result /= Part;
				continue;
			}
			const fs::path Exact = Result / Part;
			if (fs::exists(Exact, Error))
			{
				Result = Exact;
				continue;
			}
			const FString PartText = FromUtf8(Part.string());
			bool bFound = false;
			for (fs::directory_iterator It(Result.empty() ? fs::path(".") : Result, Error), End; !Error && It != End; It.increment(Error))
			{
				if (FromUtf8(It->path().filename().string()).Equals(PartText, ESearchCase::IgnoreCase))
				{
					Result = It->path();
					bFound = true;
					break;
				}
			}
			if (!bFound)
			{
				return FString();
			}
		}
		return FromUtf8(Result.string());
	}

	void RemoveStaleTemporaryFiles(const FString& Dir)
	{
		std::error_code Error;
		for (fs::recursive_directory_iterator It(ToUtf8(Dir), Error), End; !Error && It != End; It.increment(Error))
		{
			const pid_t Owner = It->is_regular_file(Error) ? TemporaryFileOwner(It->path().filename().string()) : 0;
			if (Owner > 0 && !IsProcessRunning(Owner))
			{
				std::error_code RemoveError;
				if (fs::remove(It->path(), RemoveError))
				{
					UE_LOG(LogPackageFileStore, Log, TEXT("Removed '%s', left behind by process %d, which no longer runs."), *FromUtf8(It->path().string()),
						(int32)Owner);
				}
			}
		}
	}
}
