// FSoftObjectPath: a reference to an object by its path, loaded on demand.
#pragma once

#include "Containers/UnrealString.h"
#include "UObject/TopLevelAssetPath.h"

class UObject;

struct FSoftObjectPath
{
	FSoftObjectPath() = default;
	FSoftObjectPath(const FSoftObjectPath&) = default;
	FSoftObjectPath(FSoftObjectPath&&) = default;
	FSoftObjectPath& operator=(const FSoftObjectPath&) = default;
	FSoftObjectPath& operator=(FSoftObjectPath&&) = default;

	COREUOBJECT_API FSoftObjectPath(const FString& Path);
	COREUOBJECT_API explicit FSoftObjectPath(FWideStringView Path);
	COREUOBJECT_API explicit FSoftObjectPath(const WIDECHAR* Path);
	explicit FSoftObjectPath(FTopLevelAssetPath InAssetPath) : AssetPath(InAssetPath) {}
	explicit FSoftObjectPath(FTopLevelAssetPath InAssetPath, const FString& InSubPathString) : AssetPath(InAssetPath), SubPathString(InSubPathString) {}
	COREUOBJECT_API FSoftObjectPath(const UObject* InObject);

	[[nodiscard]] static FSoftObjectPath ConstructFromObject(const UObject* InObject) { return FSoftObjectPath(InObject); }
	[[nodiscard]] static FSoftObjectPath ConstructFromStringPath(FStringView Path) { return FSoftObjectPath(Path); }
	[[nodiscard]] static FSoftObjectPath ConstructFromAssetPath(FTopLevelAssetPath Path) { return FSoftObjectPath(Path); }

	// "/Package/Path.Asset" or "/Package/Path.Asset:Sub"; empty for a null path.
	[[nodiscard]] COREUOBJECT_API FString ToString() const;
	[[nodiscard]] FString GetAssetPathString() const { return AssetPath.ToString(); }
	[[nodiscard]] FTopLevelAssetPath GetAssetPath() const { return AssetPath; }
	[[nodiscard]] FString GetLongPackageName() const { return AssetPath.GetPackageName().IsNone() ? FString() : AssetPath.GetPackageName().ToString(); }
	[[nodiscard]] FName GetLongPackageFName() const { return AssetPath.GetPackageName(); }
	[[nodiscard]] FString GetAssetName() const { return AssetPath.GetAssetName().IsNone() ? FString() : AssetPath.GetAssetName().ToString(); }
	[[nodiscard]] const FString& GetSubPathString() const { return SubPathString; }
	[[nodiscard]] bool IsValid() const { return AssetPath.IsValid(); }
	[[nodiscard]] bool IsNull() const { return AssetPath.IsNull(); }
	[[nodiscard]] bool IsAsset() const { return AssetPath.IsValid() && !AssetPath.GetAssetName().IsNone() && SubPathString.IsEmpty(); }

	COREUOBJECT_API void SetPath(FStringView Path);
	void Reset() { *this = FSoftObjectPath(); }

	// Finds the object in memory; never loads.
	[[nodiscard]] COREUOBJECT_API UObject* ResolveObject() const;
	// Finds the object in memory or loads it.
	COREUOBJECT_API UObject* TryLoad() const;

	// Equal when the package, asset and sub-path names are equal, ignoring case as names do.
	[[nodiscard]] bool operator==(const FSoftObjectPath& Other) const
	{
		return AssetPath == Other.AssetPath && SubPathString.Equals(Other.SubPathString, ESearchCase::IgnoreCase);
	}
	[[nodiscard]] bool operator!=(const FSoftObjectPath& Other) const { return !(*this == Other); }

private:
	FTopLevelAssetPath AssetPath;
	FString SubPathString;
};
