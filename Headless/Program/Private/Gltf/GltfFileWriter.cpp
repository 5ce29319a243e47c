#include "GltfFileWriter.h"

#include "Headless/PackageFileStore.h"

#include <limits>
#include <sstream>
#include <string>

namespace UE::Headless
{
	namespace
	{
		constexpr uint32 GlbMagic = 0x46546C67; // "glTF"
		constexpr uint32 GlbVersion = 2;
		constexpr uint32 JsonChunkType = 0x4E4F534A; // "JSON"
		constexpr uint32 BinaryChunkType = 0x004E4942; // "BIN\0"

		// The document's JSON as tinygltf writes it, without the trailing line break.
		std::string SerializeModel(const tinygltf::Model& Model, bool bPretty)
		{
			std::ostringstream Stream;
			tinygltf::TinyGLTF Gltf;
			Gltf.WriteGltfSceneToStream(&Model, Stream, bPretty, /*writeBinary*/ false);
			std::string Json = Stream.str();
			while (!Json.empty() && (Json.back() == '\n' || Json.back() == '\r'))
			{
				Json.pop_back();
			}
			return Json;
		}

		// tinygltf would copy the whole buffer into a GLB chunk of its own before writing it: it writes the
		// document, and the binary chunk goes to the file straight from the export's buffer.
		bool WriteGlb(FSafeFileWriter& Writer, const FGltfDocument& Document, int64& OutBytes, FString& OutError)
		{
			std::string Json = SerializeModel(Document.GetModel(), false);
			// The one buffer is the binary chunk: it has a length and no URI.
			Json.insert(1, "\"buffers\":[{\"byteLength\":" + std::to_string(Document.GetBufferSize()) + "}],");
			Json.append((4 - Json.size() % 4) % 4, ' ');
			const int64 BinaryLength = (Document.GetBufferSize() + 3) / 4 * 4;
			OutBytes = 12 + 8 + (int64)Json.size() + 8 + BinaryLength;
			// GLB gives every length in 32 bits.
			if (OutBytes > (int64)std::numeric_limits<uint32>::max())
			{
				OutError = FString::Printf(TEXT("its %lld bytes are too many for one .glb file"), (long long)OutBytes);
				return false;
			}

			const uint32 Header[] = { GlbMagic, GlbVersion, (uint32)OutBytes, (uint32)Json.size(), JsonChunkType };
			Writer.Write(Header, sizeof(Header));
			Writer.Write(Json.data(), (int64)Json.size());
			const uint32 BinaryHeader[] = { (uint32)BinaryLength, BinaryChunkType };
			Writer.Write(BinaryHeader, sizeof(BinaryHeader));
			Writer.Write(Document.GetBufferData(), Document.GetBufferSize());
			const uint8 Padding[3] = { 0, 0, 0 };
			Writer.Write(Padding, BinaryLength - Document.GetBufferSize());
			return true;
		}

		void WriteText(FSafeFileWriter& Writer, FGltfDocument& Document, int64& OutBytes)
		{
			tinygltf::Model& Model = Document.GetModel();
			tinygltf::Buffer& Buffer = Model.buffers.emplace_back();
			Buffer.data.assign(Document.GetBufferData(), Document.GetBufferData() + Document.GetBufferSize());
			const std::string Json = SerializeModel(Model, true) + "\n";
			Model.buffers.pop_back();
			Writer.Write(Json.data(), (int64)Json.size());
			OutBytes = (int64)Json.size();
		}
	}

	bool WriteGltfFile(FGltfDocument& Document, const FString& Filename, bool bBinary, int64& OutBytes, FString& OutError)
	{
		FSafeFileWriter Writer;
		if (!Writer.Open(Filename, OutError))
		{
			return false;
		}
		if (bBinary)
		{
			if (!WriteGlb(Writer, Document, OutBytes, OutError))
			{
				return false;
			}
		}
		else
		{
			WriteText(Writer, Document, OutBytes);
		}
		return Writer.Commit(OutError);
	}
}
