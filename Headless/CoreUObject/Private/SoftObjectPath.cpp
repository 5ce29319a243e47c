#include "UObject/SoftObjectPath.h"

#include "AssetRegistry/AssetData.h"
#include "UObject/Class.h"
#include "UObject/Object.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

FTopLevelAssetPath::FTopLevelAssetPath(FStringView Path)
{
	TrySetPath(Path);
}

bool FTopLevelAssetPath::TrySetPath(FStringView Path)
{
	PackageName = FName();
	AssetName = FName();
	const FString Text(Path);
	if (Text.IsEmpty() || !Text.StartsWith(TEXT("/")))
	{
		return false;
	}
	int32 Dot = INDEX_NONE;
	if (!Text.FindChar(TEXT('.'), Dot))
	{
		PackageName = FName(Text);
		return true;
	}
	if (Text.Contains(TEXT(":")))
	{
		return false;
	}
	PackageName = FName(Text.Left(Dot));
	AssetName = FName(Text.RightChop(Dot + 1));
	return true;
}

FString FTopLevelAssetPath::ToString() const
{
	if (PackageName.IsNone())
	{
		return FString();
	}
	return AssetName.IsNone() ? PackageName.ToString() : PackageName.ToString() + TEXT(".") + AssetName.ToString();
}

FSoftObjectPath::FSoftObjectPath(const FString& Path)
{
	SetPath(FStringView(*Path, Path.Len()));
}

FSoftObjectPath::FSoftObjectPath(FWideStringView Path)
{
	SetPath(Path);
}

FSoftObjectPath::FSoftObjectPath(const WIDECHAR* Path)
{
	SetPath(FStringView(Path));
}

FSoftObjectPath::FSoftObjectPath(const UObject* InObject)
{
	if (InObject)
	{
		SetPath(InObject->GetPathName());
	}
}

void FSoftObjectPath::SetPath(FStringView Path)
{
	AssetPath = FTopLevelAssetPath();
	SubPathString.Empty();
	FString Text(Path);
	// Export text such as StaticMesh'/Game/A.A' names the path between the quotes.
	int32 Quote = INDEX_NONE;
	if (Text.FindChar(TEXT('\''), Quote) && Text.EndsWith(TEXT("'")) && Quote < Text.Len() - 1)
	{
		Text = Text.Mid(Quote + 1, Text.Len() - Quote - 2);
	}
	int32 Colon = INDEX_NONE;
	FString AssetPart = Text;
	if (Text.FindChar(TEXT(':'), Colon))
	{
		AssetPart = Text.Left(Colon);
		SubPathString = Text.RightChop(Colon + 1);
	}
	if (!AssetPath.TrySetPath(FStringView(*AssetPart, AssetPart.Len())))
	{
		SubPathString.Empty();
	}
}

FString FSoftObjectPath::ToString() const
{
	if (AssetPath.IsNull())
	{
		return FString();
	}
	return SubPathString.IsEmpty() ? AssetPath.ToString() : AssetPath.ToString() + TEXT(":") + SubPathString;
}

UObject* FSoftObjectPath::ResolveObject() const
{
	return IsNull() ? nullptr : StaticFindObject(UObject::StaticClass(), nullptr, ToString());
}

UObject* FSoftObjectPath::TryLoad() const
{
	if (IsNull())
	{
		return nullptr;
	}
	if (UObject* Found = ResolveObject())
	{
		return Found;
	}
	return StaticLoadObject(UObject::StaticClass(), nullptr, ToString());
}

FAssetData::FAssetData(FName InPackageName, FName InPackagePath, FName InAssetName, FTopLevelAssetPath InAssetClassPath)
	: PackageName(InPackageName)
	, PackagePath(InPackagePath)
	, AssetName(InAssetName)
	, AssetClassPath(InAssetClassPath)
{
}

FAssetData::FAssetData(const UObject* InAsset)
{
	if (!InAsset)
	{
		return;
	}
	const UPackage* Package = InAsset->GetOutermost();
	const FString PackageNameText = Package ? Package->GetName() : FString();
	int32 Slash = INDEX_NONE;
	PackageName = FName(PackageNameText);
	PackagePath = PackageNameText.FindLastChar(TEXT('/'), Slash) ? FName(PackageNameText.Left(Slash)) : FName();
	AssetName = InAsset->GetFName();
	const UClass* Class = InAsset->GetClass();
	AssetClassPath = FTopLevelAssetPath(Class->GetOutermost()->GetFName(), Class->GetFName());
}

FSoftObjectPath FAssetData::GetSoftObjectPath() const
{
	return IsValid() ? FSoftObjectPath(FTopLevelAssetPath(PackageName, AssetName)) : FSoftObjectPath();
}

FString FAssetData::GetObjectPathString() const
{
	return GetSoftObjectPath().ToString();
}

UObject* FAssetData::GetAsset() const
{
	return IsValid() ? GetSoftObjectPath().TryLoad() : nullptr;
}
