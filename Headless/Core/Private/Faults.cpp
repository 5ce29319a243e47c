#include "Headless/Faults.h"

#include <deque>
#include <map>
#include <string>

namespace
{
	struct FArmedFault
	{
		FString Reason;
		int32 SkippedCalls = 0;
	};

	std::map<std::u16string, std::deque<FArmedFault>>& ArmedFaults()
	{
		static std::map<std::u16string, std::deque<FArmedFault>> Faults;
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
			TEXT("WritePackageFile"),
		};
		return Operations;
	}

	bool FailNext(const FString& Operation, const FString& Reason, int32 SkippedCalls)
	{
		if (!GetFaultableOperations().ContainsByPredicate([&Operation](const FString& Known) { return Known.Equals(Operation); }))
		{
			return false;
		}
		ArmedFaults()[Key(*Operation)].push_back(FArmedFault{ Reason, SkippedCalls < 0 ? 0 : SkippedCalls });
		return true;
	}

	bool ConsumeFault(const TCHAR* Operation, FString* OutReason)
	{
		auto Found = ArmedFaults().find(Key(Operation));
		if (Found == ArmedFaults().end() || Found->second.empty())
		{
			return false;
		}
		FArmedFault& Next = Found->second.front();
		if (Next.SkippedCalls > 0)
		{
			--Next.SkippedCalls;
			return false;
		}
		if (OutReason)
		{
			*OutReason = Next.Reason;
		}
		Found->second.pop_front();
		return true;
	}

	void ClearFaults()
	{
		ArmedFaults().clear();
	}
}
