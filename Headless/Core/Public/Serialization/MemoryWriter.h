#pragma once

#include "Serialization/Archive.h"

#include <cstring>

class FMemoryWriter : public FArchive
{
public:
	explicit FMemoryWriter(TArray<uint8>& InBytes)
		: Bytes(InBytes)
	{
		bIsLoading = false;
	}

	void Serialize(void* Data, int64 Length) override
	{
		const int32 Offset = Bytes.AddUninitialized((int32)Length);
		std::memcpy(Bytes.GetData() + Offset, Data, (size_t)Length);
	}

private:
	TArray<uint8>& Bytes;
};
