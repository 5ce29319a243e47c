// Completion and loading of the asset paths that scripts give: SM_Rock, Meshes/SM_Rock, /Game/Meshes/SM_Rock
// and /Game/Meshes/SM_Rock.SM_Rock all reach the same mesh. None of these reports an error: a path that
// cannot be completed or loaded gives an empty text or null.
#pragma once

#include "CoreMinimal.h"

class UMaterialInterface;
class UObject;
class UStaticMesh;

namespace CVAI::NaniteAssembly
{
	// Package.Asset form: a relative path is put under /Game/, and a package path gains its last segment as
	// the asset name ("/Game/A/SM" becomes "/Game/A/SM.SM"); a path whose last segment holds a '.' is kept.
	FString ToObjectPath(const FString& Path);

	// Package form: a relative path is put under /Game/, and an object name after the last segment's '.' is cut.
	FString ToPackagePath(const FString& Path);

	// Loads the path as given (after the /Game/ completion), then once more in Package.Asset form.
	UStaticMesh* LoadStaticMeshByPath(const FString& Path);
	UMaterialInterface* LoadMaterialByPath(const FString& Path);
	// Any class: tells an object of the wrong class from a missing one.
	UObject* LoadObjectByPath(const FString& Path);
}
