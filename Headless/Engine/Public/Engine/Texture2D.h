#pragma once

#include "Engine/Texture.h"

class UTexture2D : public UTexture
{
	DECLARE_CLASS(UTexture2D, UTexture, CLASS_None, CASTCLASS_None, TEXT("/Script/Engine"), ENGINE_API)

public:
	[[nodiscard]] int32 GetSizeX() const { return SizeX; }
	[[nodiscard]] int32 GetSizeY() const { return SizeY; }
	void SetSize(int32 InSizeX, int32 InSizeY)
	{
		SizeX = InSizeX;
		SizeY = InSizeY;
	}

	ENGINE_API void Serialize(FArchive& Ar) override;

private:
	int32 SizeX = 0;
	int32 SizeY = 0;
};
