// One writer per project: a POSIX record lock on <project>/Saved/cvai.lock. The kernel lets go of it when its process
// ends, however it ends, so a crashed cvai never blocks the next one, and F_GETLK names the process that holds it.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace UE::Headless::Cvai
{
	enum class EProjectAccess
	{
		// Beside other readers; no writer.
		Read,
		// Alone.
		Write,
	};

	enum class ELockResult
	{
		Locked,
		// Another process held the lock for the whole time allowed; GetHolder names it.
		Busy,
		// The lock file cannot be made or locked; GetError says why.
		Failed,
	};

	class FProjectLock
	{
	public:
		FProjectLock() = default;
		~FProjectLock();
		FProjectLock(const FProjectLock&) = delete;
		FProjectLock& operator=(const FProjectLock&) = delete;

		// Takes the lock, trying again until TimeoutSeconds have passed; OnWaiting hears of the holder once, when
		// the first try fails and there is time to wait. A reader of a project whose lock file cannot be made (a
		// read-only folder) goes on without the lock, as there is nothing it could spoil.
		ELockResult Lock(const std::string& ProjectDir, EProjectAccess Access, double TimeoutSeconds, const std::function<void(pid_t Holder)>& OnWaiting);

		void Unlock();

		[[nodiscard]] pid_t GetHolder() const { return Holder; }
		[[nodiscard]] const std::string& GetError() const { return Error; }

	private:
		int Descriptor = -1;
		pid_t Holder = 0;
		std::string Error;
	};
}
