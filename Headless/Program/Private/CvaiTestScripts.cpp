#include "CvaiTestScripts.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include <fnmatch.h>

namespace UE::Headless::Cvai
{
	namespace
	{
		namespace fs = std::filesystem;

		constexpr std::string_view TestSuffix = "_test.lua";

		bool IsTestScript(const fs::path& Path)
		{
			const std::string Name = Path.filename().string();
			return Name.size() > TestSuffix.size() && Name.compare(Name.size() - TestSuffix.size(), TestSuffix.size(), TestSuffix) == 0;
		}

		// Name.after.lua, then Name.after2.lua, Name.after3.lua, ... for as long as they follow on.
		std::vector<std::string> FindFollowUps(const std::string& Script)
		{
			const std::string Stem = Script.substr(0, Script.size() - std::string_view(".lua").size());
			std::vector<std::string> FollowUps;
			std::error_code Error;
			for (int Number = 1;; ++Number)
			{
				const std::string FollowUp = Stem + ".after" + (Number == 1 ? std::string() : std::to_string(Number)) + ".lua";
				if (!fs::is_regular_file(FollowUp, Error))
				{
					return FollowUps;
				}
				FollowUps.push_back(FollowUp);
			}
		}

		std::vector<std::string> FindUnder(const fs::path& Folder, std::string& OutError)
		{
			std::vector<std::string> Found;
			std::error_code Error;
			fs::recursive_directory_iterator It(Folder, fs::directory_options::skip_permission_denied, Error);
			for (; !Error && It != fs::recursive_directory_iterator(); It.increment(Error))
			{
				if (It->is_directory(Error) && It->path().filename().string().front() == '.')
				{
					It.disable_recursion_pending();
				}
				else if (It->is_regular_file(Error) && IsTestScript(It->path()))
				{
					Found.push_back(It->path().lexically_normal().string());
				}
			}
			if (Error)
			{
				OutError = "cannot read the folder '" + Folder.string() + "': " + Error.message();
			}
			std::sort(Found.begin(), Found.end());
			return Found;
		}
	}

	bool MatchesFilter(const std::string& Path, const std::string& Filter)
	{
		if (Filter.find_first_of("*?[") != std::string::npos)
		{
			return fnmatch(Filter.c_str(), Path.c_str(), 0) == 0;
		}
		return Path.find(Filter) != std::string::npos;
	}

	bool FindTestScripts(const std::vector<std::string>& Paths, const std::string& Filter, std::vector<FTestScript>& OutScripts, std::string& OutError)
	{
		std::set<fs::path> Seen;
		for (const std::string& Path : Paths)
		{
			std::error_code Error;
			std::vector<std::string> Scripts;
			if (fs::is_directory(Path, Error))
			{
				Scripts = FindUnder(Path, OutError);
				if (!OutError.empty())
				{
					return false;
				}
			}
			else if (fs::is_regular_file(Path, Error))
			{
				Scripts.push_back(Path);
			}
			else
			{
				OutError = "no script or folder '" + Path + "'";
				return false;
			}
			for (const std::string& Script : Scripts)
			{
				if (MatchesFilter(Script, Filter) && Seen.insert(fs::weakly_canonical(Script, Error)).second)
				{
					OutScripts.push_back({ Script, FindFollowUps(Script) });
				}
			}
		}
		return true;
	}
}
