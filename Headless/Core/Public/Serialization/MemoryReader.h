#pragma once

#include "Serialization/Archive.h"

#include <cstring>

class FMemoryReader : public FArchive
{
public:
	explicit FMemoryReader(const TArray<uint8>& InBytes)
		: Bytes(InBytes)
	{
		bIsLoading = true;
	}

	void Serialize(void* Data, int64 Length) override
	{
		if (Length < 0 || Offset + Length > Bytes.Num())
		{
			SetError();
			std::memset(Data, 0, (size_t)(Length > 0 ? Length : 0));
			return;
		}
		std::memcpy(Data, Bytes.GetData() + Offset, (size_t)Length);
		Offset += Length;
	}

	[[nodiscard]] bool AtEnd() const { return Offset >= Bytes.Num(); }

private:
	const TArray<uint8>& Bytes;
	int64 Offset = 0;
};
