#pragma once

#include "Engine/Texture.h"

namespace UE::Headless
{
	struct FTextureAccess;
}

class UTexture2D : public UTexture
{
	DECLARE_CLASS(UTexture2D, UTexture, CLASS_None, CASTCLASS_None, TEXT("/Script/Engine"), ENGINE_API)

public:
	[[nodiscard]] int32 GetSizeX() const { return SizeX; }
	[[nodiscard]] int32 GetSizeY() const { return SizeY; }

	ENGINE_API void Serialize(FArchive& Ar) override;

private:
	// The package reader sets the size that a package file records.
	friend struct UE::Headless::FTextureAccess;

	int32 SizeX = 0;
	int32 SizeY = 0;
};
