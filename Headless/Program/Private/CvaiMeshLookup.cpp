#include "CvaiMeshLookup.h"

#include "Engine/StaticMesh.h"
#include "Headless/PackageLoadFaults.h"
#include "Headless/StringUtils.h"
#include "Misc/PackageName.h"
#include "Templates/Casts.h"
#include "UObject/UObjectGlobals.h"

namespace UE::Headless::Cvai
{
	namespace
	{
		// A path that does not begin with '/' is under the game's content root.
		FString WithGameRoot(const std::string& Path)
		{
			return (Path.rfind('/', 0) == 0 ? FString() : FString(TEXT("/Game/"))) + FromUtf8(Path);
		}

		// The object's name is the asset's when the path does not name one after a '.' in its last segment.
		FString ToObjectPath(const FString& Path)
		{
			int32 LastSlash = INDEX_NONE;
			int32 LastDot = INDEX_NONE;
			Path.FindLastChar(TEXT('/'), LastSlash);
			Path.FindLastChar(TEXT('.'), LastDot);
			if (LastDot > LastSlash || LastSlash + 1 == Path.Len())
			{
				return Path;
			}
			return Path + TEXT(".") + Path.RightChop(LastSlash + 1);
		}
	}

	std::string DescribePackageLoadFault(const std::string& Path)
	{
		return ToUtf8(UE::Headless::GetPackageLoadFault(FPackageName::ObjectPathToPackageName(WithGameRoot(Path))));
	}

	UStaticMesh* LoadStaticMesh(const std::string& Path, std::string& OutError)
	{
		const FString ObjectPath = ToObjectPath(WithGameRoot(Path));
		UStaticMesh* Mesh = Path.empty() ? nullptr : Cast<UStaticMesh>(StaticLoadObject(UStaticMesh::StaticClass(), nullptr, ObjectPath, {}, LOAD_None, nullptr, true));
		if (!Mesh)
		{
			const std::string Fault = DescribePackageLoadFault(Path);
			OutError = Fault.empty() ? "static mesh not found: " + Path : Fault;
		}
		return Mesh;
	}
}
