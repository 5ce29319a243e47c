#include "AssetRegistry/IAssetRegistry.h"

#include "AssetRegistry/AssetData.h"
#include "Headless/AssetRegistryState.h"
#include "Headless/PackageFiles.h"
#include "Headless/StringUtils.h"
#include "Logging/LogMacros.h"
#include "Misc/PackageName.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <filesystem>
#include <map>

DEFINE_LOG_CATEGORY_STATIC(LogAssetRegistry, Log, All);

namespace
{
	using FOnDiskAsset = UE::Headless::FPackageFileAsset;

	// The registry reads a package file's table of objects the first time it is asked about it, and again
	// whenever the file changes.
	class FHeadlessAssetRegistry final : public IAssetRegistry
	{
	public:
		FAssetData GetAssetByObjectPath(const FSoftObjectPath& ObjectPath, bool bIncludeOnlyOnDiskAssets, bool bSkipARFilteredAssets) const override
		{
			if (ObjectPath.IsNull())
			{
				return FAssetData();
			}
			if (!bIncludeOnlyOnDiskAssets)
			{
				if (UObject* InMemory = StaticFindObject(UObject::StaticClass(), nullptr, ObjectPath.ToString()))
				{
					const UPackage* Package = InMemory->GetOutermost();
					const bool bFiltered = bSkipARFilteredAssets && Package && Package->HasAnyPackageFlags(PKG_ContainsNoAsset);
					return bFiltered ? FAssetData() : FAssetData(InMemory);
				}
			}
			FString PackageName = ObjectPath.GetLongPackageName();
			FString Filename;
			if (!FPackageName::IsValidLongPackageName(PackageName, true) || !FPackageName::DoesPackageExist(PackageName, &Filename))
			{
				return FAssetData();
			}
			// The registry knows a package by the name its file gives, whatever letter case the question used.
			FString NameOnDisk;
			if (FPackageName::TryConvertFilenameToLongPackageName(Filename, NameOnDisk))
			{
				PackageName = NameOnDisk;
			}
			for (const FOnDiskAsset& Asset : ReadTable(Filename))
			{
				if (Asset.Name.Equals(ObjectPath.GetAssetName(), ESearchCase::IgnoreCase))
				{
					int32 Slash = INDEX_NONE;
					PackageName.FindLastChar(TEXT('/'), Slash);
					return FAssetData(FName(PackageName), FName(PackageName.Left(Slash)), FName(Asset.Name),
						FTopLevelAssetPath(FName(TEXT("/Script/Engine")), FName(Asset.ClassName)));
				}
			}
			return FAssetData();
		}

		void AssetCreated(UObject* NewAsset) override
		{
			if (!ensure(NewAsset && NewAsset->IsAsset()))
			{
				UE_LOG(LogAssetRegistry, Warning, TEXT("AssetCreated was given an object that is not an asset."));
				return;
			}
			if (UPackage* Package = NewAsset->GetOutermost())
			{
				Package->SetPackageFlags(PKG_NewlyCreated);
			}
		}

		void Forget(const FString& PackageName)
		{
			FString Filename;
			if (FPackageName::DoesPackageExist(PackageName, &Filename))
			{
				Tables.erase(UE::Headless::ToUtf8(Filename));
			}
		}

	private:
		const std::vector<FOnDiskAsset>& ReadTable(const FString& Filename) const
		{
			namespace fs = std::filesystem;
			const std::string Key = UE::Headless::ToUtf8(Filename);
			std::error_code Error;
			const fs::file_time_type Stamp = fs::last_write_time(Key, Error);
			auto Found = Tables.find(Key);
			if (Found != Tables.end() && Found->second.first == Stamp)
			{
				return Found->second.second;
			}
			// A file that is not a package file holds no assets; loading it reports why.
			TArray<UE::Headless::FPackageFileAsset> Read;
			FString Ignored;
			UE::Headless::ReadPackageFileAssets(Filename, Read, Ignored);
			std::vector<FOnDiskAsset> Assets(Read.begin(), Read.end());
			return (Tables[Key] = { Stamp, std::move(Assets) }).second;
		}

		mutable std::map<std::string, std::pair<std::filesystem::file_time_type, std::vector<FOnDiskAsset>>> Tables;
	};

	FHeadlessAssetRegistry& Registry()
	{
		static FHeadlessAssetRegistry Instance;
		return Instance;
	}

	bool& RegistryAvailable()
	{
		static bool bAvailable = true;
		return bAvailable;
	}
}

IAssetRegistry* IAssetRegistry::Get()
{
	return RegistryAvailable() ? &Registry() : nullptr;
}

IAssetRegistry& IAssetRegistry::GetChecked()
{
	IAssetRegistry* Instance = Get();
	check(Instance);
	return *Instance;
}

namespace UE::Headless
{
	void NotePackageOnDisk(const FString& PackageName)
	{
		Registry().Forget(PackageName);
	}

	void SetAssetRegistryAvailable(bool bAvailable)
	{
		RegistryAvailable() = bAvailable;
	}
}
