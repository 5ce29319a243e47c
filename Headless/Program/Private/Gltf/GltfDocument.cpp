#include "GltfDocument.h"

namespace UE::Headless
{
	FGltfDocument::FGltfDocument()
	{
		Model.asset.version = "2.0";
		Model.asset.generator = "cvai export (CVAI Nanite Assembly headless editor)";
		Model.buffers.emplace_back();
		Model.scenes.emplace_back();
		Model.defaultScene = 0;
	}

	int32 FGltfDocument::AddAccessor(int32 ComponentType, int32 Type, int64 Count, int32 Target)
	{
		std::vector<unsigned char>& Bytes = Model.buffers[0].data;
		// Every component here is four bytes wide, and so is every view's start.
		const size_t ByteLength = (size_t)Count * (size_t)tinygltf::GetNumComponentsInType(Type) * (size_t)tinygltf::GetComponentSizeInBytes(ComponentType);
		tinygltf::BufferView& View = Model.bufferViews.emplace_back();
		View.buffer = 0;
		View.byteOffset = Bytes.size();
		View.byteLength = ByteLength;
		View.target = Target;
		Bytes.resize(Bytes.size() + ByteLength);

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
		return Model.buffers[0].data.data() + Model.bufferViews[Entry.bufferView].byteOffset + Entry.byteOffset;
	}

	void FGltfDocument::ReserveBytes(int64 Bytes)
	{
		std::vector<unsigned char>& Data = Model.buffers[0].data;
		Data.reserve(Data.size() + (size_t)Bytes);
	}
}
