#include "CvaiProjectLock.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

namespace UE::Headless::Cvai
{
	namespace
	{
		// How often a waiting process tries again: short against a person's patience, long against a busy loop.
		constexpr std::chrono::milliseconds RetryInterval(50);

		struct flock WholeFile(short Type)
		{
			struct flock Range = {};
			Range.l_type = Type;
			Range.l_whence = SEEK_SET;
			return Range;
		}
	}

	FProjectLock::~FProjectLock()
	{
		Unlock();
	}

	ELockResult FProjectLock::Lock(const std::string& ProjectDir, EProjectAccess Access, double TimeoutSeconds, const std::function<void(pid_t Holder)>& OnWaiting)
	{
		namespace fs = std::filesystem;
		Unlock();
		const bool bWrite = Access == EProjectAccess::Write;
		std::error_code FolderError;
		const fs::path Folder = fs::path(ProjectDir) / "Saved";
		fs::create_directories(Folder, FolderError);
		const std::string Path = (Folder / "cvai.lock").string();
		// A write lock needs a descriptor open for writing, a read lock one open for reading.
		Descriptor = open(Path.c_str(), (bWrite ? O_RDWR : O_RDONLY) | O_CREAT | O_CLOEXEC, 0644);
		if (Descriptor < 0)
		{
			if (!bWrite)
			{
				return ELockResult::Locked;
			}
			Error = "cannot open '" + Path + "': " + std::strerror(errno);
			return ELockResult::Failed;
		}

		const auto Deadline = std::chrono::steady_clock::now()
			+ std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(std::max(TimeoutSeconds, 0.0)));
		bool bWaiting = false;
		for (;;)
		{
			struct flock Request = WholeFile(bWrite ? F_WRLCK : F_RDLCK);
			if (fcntl(Descriptor, F_SETLK, &Request) == 0)
			{
				return ELockResult::Locked;
			}
			if (errno != EACCES && errno != EAGAIN)
			{
				Error = "cannot lock '" + Path + "': " + std::strerror(errno);
				Unlock();
				return ELockResult::Failed;
			}
			struct flock Probe = WholeFile(bWrite ? F_WRLCK : F_RDLCK);
			if (fcntl(Descriptor, F_GETLK, &Probe) != 0 || Probe.l_type == F_UNLCK)
			{
				// The holder let go between the two calls: the next try takes the lock.
				continue;
			}
			Holder = Probe.l_pid;
			const auto Now = std::chrono::steady_clock::now();
			if (Now >= Deadline)
			{
				Unlock();
				return ELockResult::Busy;
			}
			if (!bWaiting)
			{
				bWaiting = true;
				OnWaiting(Holder);
			}
			std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(RetryInterval, std::chrono::duration_cast<std::chrono::steady_clock::duration>(Deadline - Now)));
		}
	}

	void FProjectLock::Unlock()
	{
		// Closing the descriptor releases the lock.
		if (Descriptor >= 0)
		{
			close(Descriptor);
			Descriptor = -1;
		}
	}
}
