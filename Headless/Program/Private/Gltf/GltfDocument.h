// The glTF document of one export: tinygltf's model, and the bytes of the one buffer that all its accessors
// live in, kept apart from the model so that a large buffer is never copied on its way to the file.
#pragma once

#include "HAL/Platform.h"

#include <tiny_gltf.h>

#include <cstdlib>
#include <memory>

namespace UE::Headless
{
	class FGltfDocument
	{
	public:
		FGltfDocument();

		// Appends an accessor of Count elements in a buffer view of its own (Target: ARRAY_BUFFER for vertex
		// attributes, ELEMENT_ARRAY_BUFFER for indices, 0 for data that no vertex stage reads). Its bytes are
		// left for the caller to fill, from GetAccessorData.
		int32 AddAccessor(int32 ComponentType, int32 Type, int64 Count, int32 Target);

		// The first byte of an accessor's data. Appending another accessor may move the buffer: fill one before
		// the next is added, or take the pointers again once all are added.
		[[nodiscard]] uint8* GetAccessorData(int32 Accessor);

		// Makes room at once for accessors that will be added later, so that their appends do not copy the buffer.
		void ReserveBytes(int64 Bytes);

		[[nodiscard]] const uint8* GetBufferData() const { return Bytes.get(); }
		[[nodiscard]] int64 GetBufferSize() const { return NumBytes; }

		// The model refers to its buffer as buffer 0, which it does not hold itself.
		[[nodiscard]] tinygltf::Model& GetModel() { return Model; }
		[[nodiscard]] const tinygltf::Model& GetModel() const { return Model; }

	private:
		tinygltf::Model Model;
		struct FFreeBytes
		{
			void operator()(uint8* Memory) const { std::free(Memory); }
		};
		using FBufferBytes = std::unique_ptr<uint8[], FFreeBytes>;

		// Left uninitialised: every byte is written by the caller of AddAccessor.
		FBufferBytes Bytes;
		int64 NumBytes = 0;
		int64 Capacity = 0;
	};
}
