// Harness-only: writes a package file as it goes, never holding the whole document: a JSON text whose header
// has one key per line and whose objects take one line each, then, when a large table was written, the binary
// section with that table's records.
#pragma once

#include "Containers/UnrealString.h"
#include "Headless/PackageFileRecords.h"

#include <memory>
#include <vector>

namespace UE::Headless
{
	class FSafeFileWriter;

	class COREUOBJECT_API FPackageFileWriter
	{
	public:
		explicit FPackageFileWriter(FSafeFileWriter& InOutput);
		~FPackageFileWriter();
		FPackageFileWriter(const FPackageFileWriter&) = delete;
		FPackageFileWriter& operator=(const FPackageFileWriter&) = delete;

		void BeginDocument(const FString& PackageName);
		// One object of the package, on a line of its own; its members follow as keys and values.
		void BeginObjectEntry();
		void EndObjectEntry();
		// Ends the JSON text and writes the binary section of the tables that went there.
		void EndDocument();

		// Names the next value inside an object. Names are this build's own and need no escaping.
		FPackageFileWriter& Key(const char* Name);
		void Bool(bool bValue);
		void Int(int64 Value);
		void Float(float Value);
		void String(const FString& Value);
		void Null();
		void BeginObject();
		void EndObject();
		void BeginArray();
		void EndArray();
		// A table: inline when it has at most PackageFileInlineRecordLimit records, else in the binary section, in
		// which case Source is asked for the records when the JSON text is done.
		void Records(FPackageRecordLayout Layout, int64 NumRecords, std::unique_ptr<FPackageRecordSource> Source);

	private:
		struct FBinaryTable;

		void BeforeValue();
		void Raw(const char* Text, int64 Length);
		void RawText(const char* Text);
		void WriteBinarySection();

		FSafeFileWriter& Output;
		// Bit N is set once a value was written at nesting depth N, so that the next one needs a comma.
		uint64 WrittenAtDepth = 0;
		int32 Depth = 0;
		bool bAfterKey = false;
		bool bAnyObjectEntry = false;
		std::vector<std::unique_ptr<FBinaryTable>> BinaryTables;
		int64 BinarySize = 0;
	};
}
