#include "Headless/PackageBackup.h"

#include "Headless/StringUtils.h"
#include "Misc/PackageName.h"
#include "Misc/Paths.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <string>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace
{
	namespace fs = std::filesystem;

	// "YYYY-MM-DD-HH-MM-SS", as the engine stamps its backups.
	constexpr size_t StampLength = 19;

	std::string Stamp()
	{
		const std::time_t Now = std::time(nullptr);
		std::tm Local;
		localtime_r(&Now, &Local);
		char Buffer[StampLength + 1];
		std::strftime(Buffer, sizeof(Buffer), "%Y-%m-%d-%H-%M-%S", &Local);
		return Buffer;
	}

	bool IsStamp(const std::string& Text)
	{
		if (Text.size() != StampLength)
		{
			return false;
		}
		for (size_t Index = 0; Index < Text.size(); ++Index)
		{
			const bool bDash = Index == 4 || Index == 7 || Index == 10 || Index == 13 || Index == 16;
			if (bDash ? Text[Index] != '-' : (Text[Index] < '0' || Text[Index] > '9'))
			{
				return false;
			}
		}
		return true;
	}

	struct FBackup
	{
		std::string Stamp;
		long long Counter = 0;
		fs::path Path;
	};

	// A backup of the package whose file is Base + Extension: Base_<stamp>[_<counter>]Extension.
	bool ParseBackupName(const std::string& Name, const std::string& Base, const std::string& Extension, FBackup& OutBackup)
	{
		const size_t Fixed = Base.size() + 1 + StampLength + Extension.size();
		if (Name.size() < Fixed || Name.compare(0, Base.size() + 1, Base + "_") != 0
			|| Name.compare(Name.size() - Extension.size(), Extension.size(), Extension) != 0)
		{
			return false;
		}
		OutBackup.Stamp = Name.substr(Base.size() + 1, StampLength);
		const std::string Rest = Name.substr(Fixed - Extension.size(), Name.size() - Fixed);
		if (!IsStamp(OutBackup.Stamp))
		{
			return false;
		}
		if (Rest.empty())
		{
			OutBackup.Counter = 0;
			return true;
		}
		if (Rest.size() < 2 || Rest.size() > 10 || Rest[0] != '_' || !std::all_of(Rest.begin() + 1, Rest.end(), [](char Char) { return Char >= '0' && Char <= '9'; }))
		{
			return false;
		}
		OutBackup.Counter = std::stoll(Rest.substr(1));
		return true;
	}

	void RemoveOldestBackups(const fs::path& Folder, const std::string& Base, const std::string& Extension)
	{
		std::vector<FBackup> Backups;
		std::error_code Error;
		for (fs::directory_iterator It(Folder, Error), End; !Error && It != End; It.increment(Error))
		{
			FBackup Backup;
			if (It->is_regular_file(Error) && ParseBackupName(It->path().filename().string(), Base, Extension, Backup))
			{
				Backup.Path = It->path();
				Backups.push_back(Backup);
			}
		}
		std::sort(Backups.begin(), Backups.end(), [](const FBackup& A, const FBackup& B) { return std::tie(A.Stamp, A.Counter) < std::tie(B.Stamp, B.Counter); });
		for (size_t Index = 0; Index + UE::Headless::MaxPackageBackups < Backups.size(); ++Index)
		{
			fs::remove(Backups[Index].Path, Error);
		}
	}
}

namespace UE::Headless
{
	bool BackupPackageFile(const FString& PackageName, const FString& Filename, FString& OutError)
	{
		const fs::path Existing(ToUtf8(Filename));
		std::error_code Error;
		if (!fs::is_regular_file(Existing, Error))
		{
			return true;
		}
		const fs::path Folder = fs::path(ToUtf8(FPaths::ProjectSavedDir())) / "Backup" / ToUtf8(FPackageName::GetLongPackagePath(PackageName)).substr(1);
		fs::create_directories(Folder, Error);
		if (Error)
		{
			OutError = FString::Printf(TEXT("cannot keep a backup of '%s': cannot create '%s': %s"), *Filename, *FromUtf8(Folder.string()),
				*FromUtf8(Error.message()));
			return false;
		}
		const std::string FileName = Existing.filename().string();
		const std::string PackageExtension = ToUtf8(FPackageName::GetAssetPackageExtension());
		const bool bPackageExtension = FileName.size() > PackageExtension.size()
			&& FromUtf8(FileName.substr(FileName.size() - PackageExtension.size())).Equals(FromUtf8(PackageExtension), ESearchCase::IgnoreCase);
		const std::string Extension = bPackageExtension ? FileName.substr(FileName.size() - PackageExtension.size()) : Existing.extension().string();
		const std::string Base = FileName.substr(0, FileName.size() - Extension.size());

		// Never over an earlier backup, even one made in the same second.
		const std::string Stem = Base + "_" + Stamp();
		fs::path Backup = Folder / (Stem + Extension);
		for (int32 Counter = 1; fs::exists(Backup, Error); ++Counter)
		{
			Backup = Folder / (Stem + "_" + std::to_string(Counter) + Extension);
		}
		// A second name for the file costs nothing, and the save then moves a new file over the old name only.
		if (link(Existing.c_str(), Backup.c_str()) != 0 && !fs::copy_file(Existing, Backup, Error))
		{
			OutError = FString::Printf(TEXT("cannot keep a backup of '%s' as '%s': %s"), *Filename, *FromUtf8(Backup.string()), *FromUtf8(Error.message()));
			return false;
		}
		RemoveOldestBackups(Folder, Base, Extension);
		return true;
	}
}
