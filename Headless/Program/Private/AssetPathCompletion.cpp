#include "Headless/AssetPathCompletion.h"

#include "Misc/PackageName.h"

namespace UE::Headless
{
	FString CompletePackageName(const FString& Path)
	{
		if (Path.IsEmpty())
		{
			return Path;
		}
		const FString Rooted = Path.StartsWith(TEXT("/")) ? Path : TEXT("/Game/") + Path;
		const int32 AssetNameStart = Rooted.Len() - FPackageName::GetLongPackageAssetName(Rooted).Len();
		int32 Dot = INDEX_NONE;
		return Rooted.FindLastChar(TEXT('.'), Dot) && Dot >= AssetNameStart ? Rooted.Left(Dot) : Rooted;
	}
}
