#include "Engine/Texture2D.h"
#include "Headless/ObjectRegistry.h"
#include "Serialization/Archive.h"
#include "Materials/Material.h"
#include "Materials/MaterialInstanceConstant.h"
#include "Templates/Casts.h"
#include "UObject/UObjectGlobals.h"

IMPLEMENT_HEADLESS_CLASS(UMaterialInterface, "MaterialInterface")
IMPLEMENT_HEADLESS_CLASS(UMaterial, "Material")
IMPLEMENT_HEADLESS_CLASS(UMaterialInstance, "MaterialInstance")
IMPLEMENT_HEADLESS_CLASS(UMaterialInstanceConstant, "MaterialInstanceConstant")
IMPLEMENT_HEADLESS_CLASS(UTexture, "Texture")
IMPLEMENT_HEADLESS_CLASS(UTexture2D, "Texture2D")

UMaterial* UMaterialInstance::GetMaterial()
{
	// A cycle of parents would never end: stop after a chain longer than any real one.
	UMaterialInterface* Current = Parent.Get();
	for (int32 Depth = 0; Current && Depth < 64; ++Depth)
	{
		if (UMaterial* Material = Cast<UMaterial>(Current))
		{
			return Material;
		}
		UMaterialInstance* Instance = Cast<UMaterialInstance>(Current);
		Current = Instance ? Instance->Parent.Get() : nullptr;
	}
	return nullptr;
}

void UMaterialInstance::Serialize(FArchive& Ar)
{
	Super::Serialize(Ar);
	FString ParentPath = Ar.IsSaving() && Parent ? Parent->GetPathName() : FString();
	Ar << ParentPath;
	if (Ar.IsLoading())
	{
		Parent = ParentPath.IsEmpty() ? nullptr : Cast<UMaterialInterface>(StaticFindObject(UMaterialInterface::StaticClass(), nullptr, ParentPath));
	}
}

void UTexture2D::Serialize(FArchive& Ar)
{
	Super::Serialize(Ar);
	Ar << SizeX << SizeY;
}
