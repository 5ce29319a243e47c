#include "GltfFileWriter.h"

#include "Headless/PackageFileStore.h"
#include "Headless/StringUtils.h"

#include <ostream>
#include <streambuf>

namespace UE::Headless
{
	namespace
	{
		// tinygltf writes to a stream; this one hands everything to the safe writer, which buffers it itself.
		class FSafeFileStreamBuffer : public std::streambuf
		{
		public:
			explicit FSafeFileStreamBuffer(FSafeFileWriter& InWriter)
				: Writer(InWriter)
			{
			}

			[[nodiscard]] int64 GetBytesWritten() const { return BytesWritten; }

		protected:
			std::streamsize xsputn(const char* Data, std::streamsize Size) override
			{
				Writer.Write(Data, Size);
				BytesWritten += Size;
				return Size;
			}

			int_type overflow(int_type Character) override
			{
				if (traits_type::eq_int_type(Character, traits_type::eof()))
				{
					return traits_type::not_eof(Character);
				}
				const char Byte = traits_type::to_char_type(Character);
				xsputn(&Byte, 1);
				return Character;
			}

		private:
			FSafeFileWriter& Writer;
			int64 BytesWritten = 0;
		};
	}

	bool WriteGltfFile(const FGltfDocument& Document, const FString& Filename, bool bBinary, int64& OutBytes, FString& OutError)
	{
		FSafeFileWriter Writer;
		if (!Writer.Open(Filename, OutError))
		{
			return false;
		}
		FSafeFileStreamBuffer Buffer(Writer);
		std::ostream Stream(&Buffer);
		tinygltf::TinyGLTF Gltf;
		Gltf.WriteGltfSceneToStream(&Document.GetModel(), Stream, /*prettyPrint*/ !bBinary, bBinary);
		Stream.flush();
		if (!Writer.Commit(OutError))
		{
			return false;
		}
		OutBytes = Buffer.GetBytesWritten();
		return true;
	}
}
