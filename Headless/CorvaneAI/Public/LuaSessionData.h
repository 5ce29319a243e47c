// The host's per-session data, passed to every binder with the session's Lua state.
#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "CorvaneExtensionRegistrar.h"

#include <functional>

class UPackage;

namespace UE::Headless
{
	struct FLuaSessionAccess;
}

class CORVANEAI_API FLuaSessionData
{
public:
	FLuaSessionData();
	~FLuaSessionData();

	// One line of the session's log.
	void Log(const FString& Line);

	// Whether the session may edit (or, with bForSave, save) the package. On false LastError holds the
	// reason: engine content is never edited by scripts.
	bool EnsurePackageEditable(UPackage* Package, const FString& OperationLabel, bool bForSave);

	// The reason text of the last refusal.
	FString LastError;

private:
	friend struct UE::Headless::FLuaSessionAccess;

	TArray<FString> LogLines;
	std::function<void(const FString&)> LogListener;
};
