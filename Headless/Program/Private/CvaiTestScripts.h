// Which scripts cvai test runs: every *_test.lua under the folders given, or the files given, with the follow-ups
// each one has, in a stable order.
#pragma once

#include <string>
#include <vector>

namespace UE::Headless::Cvai
{
	struct FTestScript
	{
		// The script's path as the user named it, or as found under a folder the user named.
		std::string Path;
		// Name_test.after.lua, Name_test.after2.lua, ... beside it: each runs in a new session on the same project
		// after the script, in this order.
		std::vector<std::string> FollowUps;
	};

	// The scripts under each path in turn (a folder's, searched recursively without its hidden folders, sorted by
	// path), each once, whose path holds Filter (a glob when it has *, ? or [; then it must match the whole path).
	// False, with the reason in OutError, when a path is neither a folder nor a file.
	bool FindTestScripts(const std::vector<std::string>& Paths, const std::string& Filter, std::vector<FTestScript>& OutScripts, std::string& OutError);

	// Whether the path passes --filter.
	bool MatchesFilter(const std::string& Path, const std::string& Filter);
}
