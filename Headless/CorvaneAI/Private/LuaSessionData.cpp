#include "LuaSessionData.h"

#include "Headless/CorvaneHost.h"
#include "Headless/Faults.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

FLuaSessionData::FLuaSessionData() = default;
FLuaSessionData::~FLuaSessionData() = default;

void FLuaSessionData::Log(const FString& Line)
{
	LogLines.Add(Line);
	if (LogListener)
	{
		LogListener(Line);
	}
}

bool FLuaSessionData::EnsurePackageEditable(UPackage* Package, const FString& OperationLabel, bool bForSave)
{
	FString FaultReason;
	if (UE::Headless::ConsumeFault(bForSave ? TEXT("EnsurePackageEditableForSave") : TEXT("EnsurePackageEditable"), &FaultReason))
	{
		LastError = FaultReason.IsEmpty() ? FString(TEXT("the session's editing policy refused the package")) : FaultReason;
		return false;
	}
	if (!Package)
	{
		LastError = TEXT("no package");
		return false;
	}
	if (Package == GetTransientPackage() || Package->GetName().StartsWith(TEXT("/Engine/")) || Package->HasAnyPackageFlags(PKG_CompiledIn))
	{
		LastError = bForSave ? TEXT("engine content is read-only for scripts and is never saved") : TEXT("engine content is read-only for scripts");
		return false;
	}
	LastError.Empty();
	return true;
}

namespace UE::Headless
{
	const TArray<FString>& FLuaSessionAccess::GetLogLines(const FLuaSessionData& Session)
	{
		return Session.LogLines;
	}

	void FLuaSessionAccess::SetLogListener(FLuaSessionData& Session, std::function<void(const FString&)> Listener)
	{
		Session.LogListener = MoveTemp(Listener);
	}
}
