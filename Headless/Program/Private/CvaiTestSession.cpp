#include "CvaiTestSession.h"

#include "CvaiEmbeddedTexts.h"
#include "CvaiExitCodes.h"
#include "Headless/CorvaneHost.h"

#include <cstdio>
#include <fstream>
#include <sstream>

#include <lua.hpp>
#include <sol/sol.hpp>

namespace UE::Headless::Cvai
{
	namespace
	{
		// A Lua error's message without the traceback that the session adds to it.
		std::string WithoutTraceback(const std::string& Error)
		{
			return Error.substr(0, Error.find("\nstack traceback:"));
		}
	}

	std::optional<FTestReport> ReadTestReport(const std::string& Path)
	{
		std::ifstream File(Path, std::ios::binary);
		FTestReport Report;
		if (!std::getline(File, Report.Outcome) || (Report.Outcome != "pass" && Report.Outcome != "fail" && Report.Outcome != "skip"))
		{
			return std::nullopt;
		}
		std::ostringstream Rest;
		Rest << File.rdbuf();
		Report.Message = Rest.str();
		return Report;
	}

	FTestSession::FTestSession(std::string InReportPath)
		: ReportPath(std::move(InReportPath))
	{
	}

	bool FTestSession::Install(FCorvaneLuaSession& Session)
	{
		if (ReportPath.empty())
		{
			return true;
		}
		lua_State* L = Session.GetLua().lua_state();
		lua_pushlightuserdata(L, this);
		lua_pushcclosure(L, &FTestSession::Skip, 1);
		lua_setglobal(L, "skip");
		std::string Error;
		if (!Session.RunString("expect = (function() " + std::string(ExpectLibrary) + "\nend)()", "=expect", Error))
		{
			std::fprintf(stderr, "cvai: the test library did not load: %s\n", Error.c_str());
			return false;
		}
		return true;
	}

	bool FTestSession::IsSkipped() const
	{
		return SkipReason.has_value();
	}

	int FTestSession::Finish(int Exit, const std::string& ScriptError) const
	{
		if (ReportPath.empty())
		{
			return Exit;
		}
		const char* Outcome = SkipReason ? "skip" : Exit == ExitOk ? "pass" : "fail";
		const std::string Message = SkipReason ? *SkipReason : WithoutTraceback(ScriptError);
		std::ofstream File(ReportPath, std::ios::binary | std::ios::trunc);
		File << Outcome << '\n' << Message;
		if (!File.flush())
		{
			std::fprintf(stderr, "cvai: cannot write the test report '%s'\n", ReportPath.c_str());
			return ExitFailure;
		}
		return SkipReason ? ExitSkipped : Exit;
	}

	int FTestSession::Skip(lua_State* L)
	{
		FTestSession* Self = static_cast<FTestSession*>(lua_touserdata(L, lua_upvalueindex(1)));
		const char* Reason = luaL_checkstring(L, 1);
		Self->SkipReason = Reason;
		return luaL_error(L, "skipped: %s", Reason);
	}
}
