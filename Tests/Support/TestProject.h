// A fresh project folder with a headless editor running on it, for tests written in C++.
#pragma once

#include "Headless/HeadlessEditor.h"

#include <lua.hpp>

#include <memory>
#include <string>

class FTestProject
{
public:
	// Creates the project in a new temporary folder; Start runs the editor on it (the module loaded).
	FTestProject();
	~FTestProject();

	bool Start();
	void Stop();

	[[nodiscard]] const FString& GetDir() const { return Dir; }
	[[nodiscard]] UE::Headless::FHeadlessEditor& GetEditor() { return Editor; }

	// Writes text into a file of the project (folders created as needed).
	void WriteFile(const std::string& RelativePath, const std::string& Text) const;

private:
	FString Dir;
	std::string TempRoot;
	UE::Headless::FHeadlessEditor Editor;
};

// A host session on a started project, with helpers to run Lua and read what it left.
class FTestSession
{
public:
	explicit FTestSession(FTestProject& Project);
	~FTestSession();

	// Runs a chunk; returns the error text, empty when it ran to its end.
	std::string Run(const std::string& Code);

	// Evaluates one Lua expression and returns it as text (tostring), or "error: ..." on a Lua error.
	std::string Eval(const std::string& Expression);

	[[nodiscard]] lua_State* GetLuaState();
	[[nodiscard]] FLuaSessionData& GetSessionData();
	[[nodiscard]] const TArray<FString>& GetLogLines();

private:
	std::unique_ptr<UE::Headless::FCorvaneLuaSession> Session;
};
