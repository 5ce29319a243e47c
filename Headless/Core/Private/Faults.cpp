#include "Headless/Faults.h"

#include <deque>
#include <map>
#include <string>

namespace
{
	std::map<std::u16string, std::deque<FString>>& ArmedFaults()
	{
		static std::map<std::u16string, std::deque<FString>> Faults;
		return Faults;
	}

	std::u16string Key(const TCHAR* Operation)
	{
		return std::u16string(Operation);
	}
}

namespace UE::Headless
{
	const TArray<FString>& GetFaultableOperations()
	{
		static const TArray<FString> Operations = {
			TEXT("BeginEditStaticMeshAssemblyBuild"),
			TEXT("AddAssemblyParts"),
			TEXT("FinishAssemblyBuild"),
			TEXT("NewObject"),
			TEXT("CreatePackage"),
			TEXT("EnsurePackageEditable"),
			TEXT("EnsurePackageEditableForSave"),
			TEXT("SavePackages"),
		};
		return Operations;
	}

	bool FailNext(const FString& Operation, const FString& Reason)
	{
		if (!GetFaultableOperations().ContainsByPredicate([&Operation](const FString& Known) { return Known.Equals(Operation); }))
		{
			return false;
		}
		ArmedFaults()[Key(*Operation)].push_back(Reason);
		return true;
	}

	bool ConsumeFault(const TCHAR* Operation, FString* OutReason)
	{
		auto Found = ArmedFaults().find(Key(Operation));
		if (Found == ArmedFaults().end() || Found->second.empty())
		{
			return false;
		}
		if (OutReason)
		{
			*OutReason = Found->second.front();
		}
		Found->second.pop_front();
		return true;
	}

	void ClearFaults()
	{
		ArmedFaults().clear();
	}
}
