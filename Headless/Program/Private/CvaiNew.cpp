#include "CvaiCommands.h"

#include "Headless/HeadlessEditor.h"
#include "Headless/StringUtils.h"

#include <cstdio>

namespace UE::Headless::Cvai
{
	namespace
	{
		constexpr const char* Help = "Creates DIR (and its parents) as a project: DIR/<name>.uproject with NaniteAssemblyEditorUtils enabled,\n"
			"DIR/Config/DefaultEngine.ini with r.Nanite.AllowAssemblies=1 under [ConsoleVariables], and an empty DIR/Content/.\n"
			"<name> is the folder's name. A folder that already holds a .uproject is refused.\n";

		int RunNew(const FCommandLine& CommandLine)
		{
			FProjectInfo Project;
			FString Error;
			if (!CreateProject(FromUtf8(CommandLine.Positionals[0]), Project, Error))
			{
				std::fprintf(stderr, "cvai: %s\n", ToUtf8(Error).c_str());
				return ExitFailure;
			}
			std::printf("Created project %s in %s\n", ToUtf8(Project.Name).c_str(), ToUtf8(Project.ProjectDir).c_str());
			return ExitOk;
		}
	}

	const FCommand NewCommand{ .Run = &RunNew,
		.Syntax = { .Name = "new", .Summary = "create a project folder to run scripts on", .Description = Help,
			// A folder named like an option is a mistyped option, "-" included.
			.Positionals = { .Names = { "DIR" }, .MinCount = 1, .DashedWord = EDashedWord::ExtraArgument,
				.MissingMessage = "new needs the folder to create", .ExtraMessage = "new takes exactly one folder" } } };
}
