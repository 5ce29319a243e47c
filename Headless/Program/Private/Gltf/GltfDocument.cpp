#include "GltfDocument.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/mman.h>

namespace UE::Headless
{
	FGltfDocument::FGltfDocument()
	{
		Model.asset.version = "2.0";
		Model.asset.generator = "cvai export (CVAI Nanite Assembly headless editor)";
		Model.scenes.emplace_back();
		Model.defaultScene = 0;
	}

	int32 FGltfDocument::AddAccessor(int32 ComponentType, int32 Type, int64 Count, int32 Target)
	{
		// Every component here is four bytes wide, so every view starts where the format wants it.
		const int64 ByteLength = Count * tinygltf::GetNumComponentsInType(Type) * tinygltf::GetComponentSizeInBytes(ComponentType);
		if (NumBytes + ByteLength > Capacity)
		{
			ReserveBytes(std::max(ByteLength, Capacity));
		}
		tinygltf::BufferView& View = Model.bufferViews.emplace_back();
		View.buffer = 0;
		View.byteOffset = (size_t)NumBytes;
		View.byteLength = (size_t)ByteLength;
		View.target = Target;
		NumBytes += ByteLength;

		tinygltf::Accessor& Accessor = Model.accessors.emplace_back();
		Accessor.bufferView = (int)Model.bufferViews.size() - 1;
		Accessor.componentType = ComponentType;
		Accessor.type = Type;
		Accessor.count = (size_t)Count;
		return (int32)Model.accessors.size() - 1;
	}

	uint8* FGltfDocument::GetAccessorData(int32 Accessor)
	{
		const tinygltf::Accessor& Entry = Model.accessors[Accessor];
		return Bytes.get() + Model.bufferViews[Entry.bufferView].byteOffset + Entry.byteOffset;
	}

	void FGltfDocument::ReserveBytes(int64 AddedBytes)
	{
		if (NumBytes + AddedBytes <= Capacity)
		{
			return;
		}
		// A million instances take tens of megabytes, and the first touch of each fresh 4 KiB page costs more
		// than filling it: the buffer asks for huge pages where the system gives them on request.
		constexpr int64 HugePageSize = 2 << 20;
		Capacity = (NumBytes + AddedBytes + HugePageSize - 1) / HugePageSize * HugePageSize;
		FBufferBytes Grown((uint8*)std::aligned_alloc((size_t)HugePageSize, (size_t)Capacity));
		if (!Grown)
		{
			throw std::bad_alloc();
		}
		madvise(Grown.get(), (size_t)Capacity, MADV_HUGEPAGE);
		if (NumBytes > 0)
		{
			std::memcpy(Grown.get(), Bytes.get(), (size_t)NumBytes);
		}
		Bytes = std::move(Grown);
	}
}
