#pragma once

#include "Containers/UnrealString.h"
#include "UObject/NameTypes.h"

class UObject;

// "/Package/Path.AssetName": a package name and the name of a top-level object inside it.
struct FTopLevelAssetPath
{
	FTopLevelAssetPath() = default;
	FTopLevelAssetPath(FName InPackageName, FName InAssetName)
		: PackageName(InPackageName)
		, AssetName(InAssetName)
	{
	}
	COREUOBJECT_API explicit FTopLevelAssetPath(FStringView Path);

	[[nodiscard]] FName GetPackageName() const { return PackageName; }
	[[nodiscard]] FName GetAssetName() const { return AssetName; }
	[[nodiscard]] bool IsValid() const { return !PackageName.IsNone(); }
	[[nodiscard]] bool IsNull() const { return PackageName.IsNone(); }
	[[nodiscard]] COREUOBJECT_API FString ToString() const;
	COREUOBJECT_API bool TrySetPath(FStringView Path);

	[[nodiscard]] bool operator==(const FTopLevelAssetPath& Other) const { return PackageName == Other.PackageName && AssetName == Other.AssetName; }
	[[nodiscard]] bool operator!=(const FTopLevelAssetPath& Other) const { return !(*this == Other); }

private:
	FName PackageName;
	FName AssetName;
};
