// The glTF document of one export: tinygltf's model, whose accessors all live in its one buffer.
#pragma once

#include "HAL/Platform.h"

#include <tiny_gltf.h>

namespace UE::Headless
{
	class FGltfDocument
	{
	public:
		FGltfDocument();

		// Appends an accessor of Count elements in a buffer view of its own (Target: ARRAY_BUFFER for vertex
		// attributes, ELEMENT_ARRAY_BUFFER for indices, 0 for data that no vertex stage reads). Its bytes,
		// left for the caller to fill, start at the returned accessor's GetAccessorData.
		int32 AddAccessor(int32 ComponentType, int32 Type, int64 Count, int32 Target);

		// The first byte of an accessor's data; appending another accessor moves the buffer, so fill one before
		// the next is added, or keep the accessor's index rather than the pointer.
		[[nodiscard]] uint8* GetAccessorData(int32 Accessor);

		// Grows the buffer once for accessors that will be added later, so that their appends do not copy it.
		void ReserveBytes(int64 Bytes);

		[[nodiscard]] tinygltf::Model& GetModel() { return Model; }
		[[nodiscard]] const tinygltf::Model& GetModel() const { return Model; }

	private:
		tinygltf::Model Model;
	};
}
