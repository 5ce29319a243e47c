#include "Headless/PackageFileWriter.h"

#include "Headless/PackageFileFormat.h"
#include "Headless/PackageFileStore.h"
#include "Headless/StringUtils.h"
#include "PackageFileFloats.h"

#include <nlohmann/json.hpp>
#define XXH_STATIC_LINKING_ONLY
#include <xxhash.h>

#include <bit>
#include <charconv>
#include <string>

static_assert(std::endian::native == std::endian::little, "the binary section is little-endian and written as the memory holds it");

namespace UE::Headless
{
	struct FPackageFileWriter::FBinaryTable
	{
		int32 NumFields = 0;
		int64 NumRecords = 0;
		std::unique_ptr<FPackageRecordSource> Source;
	};

	FPackageFileWriter::FPackageFileWriter(FSafeFileWriter& InOutput)
		: Output(InOutput)
	{
	}

	FPackageFileWriter::~FPackageFileWriter() = default;

	void FPackageFileWriter::Raw(const char* Text, int64 Length)
	{
		Output.Write(Text, Length);
	}

	void FPackageFileWriter::RawText(const char* Text)
	{
		Raw(Text, (int64)std::char_traits<char>::length(Text));
	}

	// The header is laid out by hand, one key per line, format and version first.
	void FPackageFileWriter::BeginDocument(const FString& PackageName)
	{
		RawText("{\n\t\"format\": \"");
		RawText(PackageFileFormatName);
		RawText("\",\n\t\"version\": ");
		bAfterKey = true;
		Int(PackageFileFormatVersion);
		RawText(",\n\t\"package\": ");
		bAfterKey = true;
		String(PackageName);
		RawText(",\n\t\"objects\": [");
	}

	void FPackageFileWriter::BeginObjectEntry()
	{
		RawText(bAnyObjectEntry ? ",\n\t\t" : "\n\t\t");
		bAnyObjectEntry = true;
		bAfterKey = true;
		BeginObject();
	}

	void FPackageFileWriter::EndObjectEntry()
	{
		EndObject();
	}

	void FPackageFileWriter::EndDocument()
	{
		RawText(bAnyObjectEntry ? "\n\t]" : "]");
		if (BinarySize > 0)
		{
			RawText(",\n\t\"binary_size\": ");
			bAfterKey = true;
			Int(BinarySize);
		}
		RawText("\n}\n");
		if (BinarySize > 0)
		{
			WriteBinarySection();
		}
	}

	// The section starts with a NUL byte, which no JSON text holds, so that a reader finds where the text ends
	// without parsing it; the tables follow back to back, and the XXH3 hash of the tables closes it.
	void FPackageFileWriter::WriteBinarySection()
	{
		Raw("", 1);
		XXH3_state_t Hash;
		XXH3_64bits_reset(&Hash);
		std::vector<uint32> Words;
		for (const std::unique_ptr<FBinaryTable>& Table : BinaryTables)
		{
			Words.resize((size_t)(PackageRecordsPerChunk * Table->NumFields));
			for (int64 First = 0; First < Table->NumRecords; First += PackageRecordsPerChunk)
			{
				const int64 Count = std::min(PackageRecordsPerChunk, Table->NumRecords - First);
				Table->Source->Produce(Words.data(), Count);
				const int64 Size = Count * Table->NumFields * (int64)sizeof(uint32);
				XXH3_64bits_update(&Hash, Words.data(), (size_t)Size);
				Output.Write(Words.data(), Size);
			}
			Table->Source.reset();
		}
		const XXH64_hash_t Digest = XXH3_64bits_digest(&Hash);
		Output.Write(&Digest, sizeof(Digest));
	}

	FPackageFileWriter& FPackageFileWriter::Key(const char* Name)
	{
		const uint64 Bit = 1ull << Depth;
		if (WrittenAtDepth & Bit)
		{
			Raw(",", 1);
		}
		WrittenAtDepth |= Bit;
		Raw("\"", 1);
		RawText(Name);
		Raw("\":", 2);
		bAfterKey = true;
		return *this;
	}

	void FPackageFileWriter::BeforeValue()
	{
		if (bAfterKey)
		{
			bAfterKey = false;
			return;
		}
		const uint64 Bit = 1ull << Depth;
		if (WrittenAtDepth & Bit)
		{
			Raw(",", 1);
		}
		WrittenAtDepth |= Bit;
	}

	void FPackageFileWriter::Bool(bool bValue)
	{
		BeforeValue();
		RawText(bValue ? "true" : "false");
	}

	void FPackageFileWriter::Int(int64 Value)
	{
		BeforeValue();
		char Buffer[24];
		const std::to_chars_result Result = std::to_chars(Buffer, Buffer + sizeof(Buffer), Value);
		Raw(Buffer, Result.ptr - Buffer);
	}

	void FPackageFileWriter::Float(float Value)
	{
		BeforeValue();
		char Buffer[PackageFileFloats::MaxTextLength];
		Raw(Buffer, PackageFileFloats::FormatFloat(Value, Buffer));
	}

	void FPackageFileWriter::String(const FString& Value)
	{
		BeforeValue();
		const std::string Text = nlohmann::json(ToUtf8(Value)).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
		Raw(Text.data(), (int64)Text.size());
	}

	void FPackageFileWriter::Null()
	{
		BeforeValue();
		RawText("null");
	}

	void FPackageFileWriter::BeginObject()
	{
		BeforeValue();
		Raw("{", 1);
		++Depth;
		WrittenAtDepth &= ~(1ull << Depth);
	}

	void FPackageFileWriter::EndObject()
	{
		--Depth;
		Raw("}", 1);
	}

	void FPackageFileWriter::BeginArray()
	{
		BeforeValue();
		Raw("[", 1);
		++Depth;
		WrittenAtDepth &= ~(1ull << Depth);
	}

	void FPackageFileWriter::EndArray()
	{
		--Depth;
		Raw("]", 1);
	}

	void FPackageFileWriter::Records(FPackageRecordLayout Layout, int64 NumRecords, std::unique_ptr<FPackageRecordSource> Source)
	{
		const int32 NumFields = Layout.Num();
		if (NumRecords > PackageFileInlineRecordLimit)
		{
			BeginObject();
			Key("offset").Int(BinarySize);
			Key("count").Int(NumRecords);
			EndObject();
			BinaryTables.push_back(std::make_unique<FBinaryTable>(FBinaryTable{ NumFields, NumRecords, std::move(Source) }));
			BinarySize += NumRecords * NumFields * (int64)sizeof(uint32);
			return;
		}
		std::vector<uint32> Words((size_t)(NumRecords * NumFields));
		Source->Produce(Words.data(), NumRecords);
		BeginArray();
		for (int64 Record = 0; Record < NumRecords; ++Record)
		{
			BeginArray();
			for (int32 Field = 0; Field < NumFields; ++Field)
			{
				const uint32 Word = Words[(size_t)(Record * NumFields + Field)];
				if (Layout[Field].Kind == EPackageRecordFieldKind::Int32)
				{
					Int(std::bit_cast<int32>(Word));
				}
				else
				{
					Float(std::bit_cast<float>(Word));
				}
			}
			EndArray();
		}
		EndArray();
	}
}
