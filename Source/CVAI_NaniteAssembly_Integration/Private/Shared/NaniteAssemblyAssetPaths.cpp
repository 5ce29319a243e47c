#include "Shared/NaniteAssemblyAssetPaths.h"

#include "Engine/StaticMesh.h"
#include "Materials/MaterialInterface.h"
#include "Templates/Casts.h"
#include "UObject/UObjectGlobals.h"

namespace CVAI::NaniteAssembly
{
	namespace
	{
		// A path that does not begin with '/' is relative to the game content root; an empty one stays empty.
		FString WithGameRoot(const FString& Path)
		{
			if (Path.IsEmpty() || Path.StartsWith(TEXT("/")))
			{
				return Path;
			}
			return TEXT("/Game/") + Path;
		}

		// The position of the last '.' when it lies after the last '/', else INDEX_NONE.
		int32 FindObjectNameDot(const FString& Path)
		{
			int32 LastSlash = INDEX_NONE;
			int32 LastDot = INDEX_NONE;
			Path.FindLastChar(TEXT('/'), LastSlash);
			Path.FindLastChar(TEXT('.'), LastDot);
			return LastDot != INDEX_NONE && LastDot > LastSlash ? LastDot : INDEX_NONE;
		}

		UObject* LoadByPath(UClass* Class, const FString& Path)
		{
			const FString Completed = WithGameRoot(Path);
			if (Completed.IsEmpty())
			{
				return nullptr;
			}
			if (UObject* Found = StaticLoadObject(Class, nullptr, Completed, {}, LOAD_None, nullptr, true))
			{
				return Found;
			}
			return StaticLoadObject(Class, nullptr, ToObjectPath(Completed), {}, LOAD_None, nullptr, true);
		}
	}

	FString ToObjectPath(const FString& Path)
	{
		const FString Completed = WithGameRoot(Path);
		if (Completed.IsEmpty() || FindObjectNameDot(Completed) != INDEX_NONE)
		{
			return Completed;
		}
		int32 LastSlash = INDEX_NONE;
		const FString AssetName = Completed.FindLastChar(TEXT('/'), LastSlash) ? Completed.RightChop(LastSlash + 1) : Completed;
		return AssetName.IsEmpty() ? Completed : FString::Printf(TEXT("%s.%s"), *Completed, *AssetName);
	}

	FString ToPackagePath(const FString& Path)
	{
		const FString Completed = WithGameRoot(Path);
		const int32 Dot = FindObjectNameDot(Completed);
		return Dot == INDEX_NONE ? Completed : FString::ConstructFromPtrSize(*Completed, Dot);
	}

	UStaticMesh* LoadStaticMeshByPath(const FString& Path)
	{
		return Cast<UStaticMesh>(LoadByPath(UStaticMesh::StaticClass(), Path));
	}

	UMaterialInterface* LoadMaterialByPath(const FString& Path)
	{
		return Cast<UMaterialInterface>(LoadByPath(UMaterialInterface::StaticClass(), Path));
	}

	UObject* LoadObjectByPath(const FString& Path)
	{
		return LoadByPath(UObject::StaticClass(), Path);
	}
}
