#include "TestProject.h"

#include "Headless/StringUtils.h"

#include <sol/sol.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>

FTestProject::FTestProject()
{
	char Template[] = "/tmp/cvai-test-XXXXXX";
	const char* Created = mkdtemp(Template);
	TempRoot = Created ? Created : "/tmp";
	Dir = UE::Headless::FromUtf8(TempRoot + "/Project");
	UE::Headless::FProjectInfo Info;
	FString Error;
	UE::Headless::CreateProject(Dir, Info, Error);
}

FTestProject::~FTestProject()
{
	Stop();
	std::error_code Error;
	std::filesystem::remove_all(TempRoot, Error);
}

bool FTestProject::Start()
{
	FString Error;
	return Editor.Start(Dir, Error);
}

void FTestProject::Stop()
{
	Editor.Stop();
}

void FTestProject::WriteFile(const std::string& RelativePath, const std::string& Text) const
{
	const std::filesystem::path Path = std::filesystem::path(UE::Headless::ToUtf8(Dir)) / RelativePath;
	std::filesystem::create_directories(Path.parent_path());
	std::ofstream(Path, std::ios::binary | std::ios::trunc) << Text;
}

FTestSession::FTestSession(FTestProject& Project)
	: Session(Project.GetEditor().CreateSession())
{
}

FTestSession::~FTestSession() = default;

std::string FTestSession::Run(const std::string& Code)
{
	std::string Error;
	return Session->RunString(Code, "=test", Error) ? std::string() : Error;
}

std::string FTestSession::Eval(const std::string& Expression)
{
	lua_State* L = GetLuaState();
	const int Top = lua_gettop(L);
	std::string Result;
	const std::string Chunk = "return tostring(" + Expression + ")";
	if (luaL_loadbuffer(L, Chunk.c_str(), Chunk.size(), "=eval") != LUA_OK || lua_pcall(L, 0, 1, 0) != LUA_OK)
	{
		Result = std::string("error: ") + (lua_tostring(L, -1) ? lua_tostring(L, -1) : "?");
	}
	else
	{
		Result = lua_tostring(L, -1) ? lua_tostring(L, -1) : "";
	}
	lua_settop(L, Top);
	return Result;
}

lua_State* FTestSession::GetLuaState()
{
	return Session->GetLua().lua_state();
}

FLuaSessionData& FTestSession::GetSessionData()
{
	return Session->GetSessionData();
}

const TArray<FString>& FTestSession::GetLogLines()
{
	return UE::Headless::FLuaSessionAccess::GetLogLines(Session->GetSessionData());
}
