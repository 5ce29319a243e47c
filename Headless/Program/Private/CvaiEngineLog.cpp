#include "CvaiCommands.h"

#include "Headless/EngineLog.h"
#include "Headless/StringUtils.h"

#include <cstdio>
#include <filesystem>
#include <memory>

namespace UE::Headless::Cvai
{
	void RouteEngineLog(const std::string& ProjectDir, bool bVerbose)
	{
		namespace fs = std::filesystem;
		std::error_code Error;
		const fs::path LogDir = fs::path(ProjectDir) / "Saved" / "Logs";
		fs::create_directories(LogDir, Error);
		std::shared_ptr<FILE> LogFile(std::fopen((LogDir / "cvai.log").string().c_str(), "w"), [](FILE* File)
		{
			if (File)
			{
				std::fclose(File);
			}
		});
		SetEngineLogListener([LogFile, bVerbose](const FEngineLogLine& Line)
		{
			const std::string Text = ToUtf8(Line.Format());
			if (LogFile)
			{
				std::fprintf(LogFile.get(), "%s\n", Text.c_str());
				std::fflush(LogFile.get());
			}
			if (bVerbose || Line.Verbosity <= ELogVerbosity::Error)
			{
				std::fprintf(stderr, "%s\n", Text.c_str());
			}
		});
	}
}
