#include "Headless/FatalExit.h"

#include "Headless/StringUtils.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace
{
	const char* ProgramName = nullptr;
	int ExitStatus = 1;
	UE::Headless::FScopedActivity* CurrentActivity = nullptr;
	UE::Headless::FScopedTemporaryFile* TemporaryFiles = nullptr;

	// Copies as much of Source as fits, always ending Target with a NUL.
	template <size_t Size>
	void CopyCut(char (&Target)[Size], const char* Source)
	{
		std::strncpy(Target, Source, Size - 1);
		Target[Size - 1] = '\0';
	}

	void WriteAll(const char* Text)
	{
		for (size_t Left = std::strlen(Text); Left > 0;)
		{
			const ssize_t Written = write(STDERR_FILENO, Text, Left);
			if (Written < 0 && errno == EINTR)
			{
				continue;
			}
			if (Written <= 0)
			{
				return;
			}
			Text += Written;
			Left -= (size_t)Written;
		}
	}

	// Removes Entry from the list that starts at Head, wherever it stands in it.
	template <typename T>
	void Unlink(T*& Head, T* Entry, T* T::*Outer)
	{
		for (T** Link = &Head; *Link; Link = &((*Link)->*Outer))
		{
			if (*Link == Entry)
			{
				*Link = Entry->*Outer;
				return;
			}
		}
	}

	void HandleFailedNew()
	{
		UE::Headless::ExitOutOfMemory();
	}
}

namespace UE::Headless
{
	FScopedActivity::FScopedActivity(const FString& Activity)
		: FScopedActivity(ToUtf8(Activity).c_str())
	{
	}

	FScopedActivity::FScopedActivity(const char* Utf8Activity)
		: Outer(CurrentActivity)
	{
		CopyCut(Text, Utf8Activity);
		CurrentActivity = this;
	}

	FScopedActivity::~FScopedActivity()
	{
		Unlink(CurrentActivity, this, &FScopedActivity::Outer);
	}

	FScopedTemporaryFile::FScopedTemporaryFile(const FString& InPath)
		: FScopedTemporaryFile(ToUtf8(InPath).c_str())
	{
	}

	FScopedTemporaryFile::FScopedTemporaryFile(const char* Utf8Path)
	{
		if (std::strlen(Utf8Path) < sizeof(Path))
		{
			CopyCut(Path, Utf8Path);
			Outer = TemporaryFiles;
			TemporaryFiles = this;
		}
	}

	FScopedTemporaryFile::~FScopedTemporaryFile()
	{
		Unlink(TemporaryFiles, this, &FScopedTemporaryFile::Outer);
	}

	void InstallOutOfMemoryHandler(const char* InProgramName, int InExitStatus)
	{
		ProgramName = InProgramName;
		ExitStatus = InExitStatus;
		std::set_new_handler(&HandleFailedNew);
	}

	void ExitOutOfMemory()
	{
		// What the program printed so far comes first; the buffer exists already, so flushing it allocates nothing.
		std::fflush(stdout);
		WriteAll(ProgramName ? ProgramName : program_invocation_short_name);
		WriteAll(": out of memory");
		if (CurrentActivity)
		{
			WriteAll(" while ");
			WriteAll(CurrentActivity->Text);
		}
		WriteAll("\n");
		for (const FScopedTemporaryFile* File = TemporaryFiles; File; File = File->Outer)
		{
			unlink(File->Path);
		}
		_exit(ExitStatus);
	}
}
