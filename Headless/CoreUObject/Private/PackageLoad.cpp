#include "PackageLoad.h"

#include "Headless/PackageFiles.h"
#include "Headless/PackageLoadFaults.h"
#include "Logging/LogMacros.h"

#include <map>
#include <string>

DEFINE_LOG_CATEGORY_STATIC(LogLinker, Log, All);

namespace
{
	std::map<std::u16string, FString>& LoadFaults()
	{
		static std::map<std::u16string, FString> Faults;
		return Faults;
	}

	std::u16string FaultKey(const FString& PackageName)
	{
		return std::u16string(*PackageName.ToLower());
	}
}

namespace UE::Headless
{
	FString GetPackageLoadFault(const FString& PackageName)
	{
		const auto Found = LoadFaults().find(FaultKey(PackageName));
		return Found == LoadFaults().end() ? FString() : Found->second;
	}

	void ClearPackageLoadFaults()
	{
		LoadFaults().clear();
	}

	bool Private::LoadPackageFile(UPackage& Package, const FString& PackageName, const FString& Filename)
	{
		FString Error;
		if (!ReadPackageFile(Package, Filename, Error))
		{
			UE_LOG(LogLinker, Error, TEXT("Failed to load package '%s': %s"), *PackageName, *Error);
			LoadFaults()[FaultKey(PackageName)] = Error;
			return false;
		}
		LoadFaults().erase(FaultKey(PackageName));
		return true;
	}
}
