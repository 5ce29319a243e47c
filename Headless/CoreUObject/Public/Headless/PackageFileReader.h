// Harness-only: reads a package file, checked whole before anything is made from it (its JSON text, format and
// version, the size and checksum of its binary section), and gives its values with where they sit, so that
// every fault names its place ("objects[0].properties.nanite.assembly.nodes[5][1] is out of range: ...").
#pragma once

#include "Containers/UnrealString.h"
#include "Headless/PackageFileRecords.h"

#include <memory>

namespace UE::Headless
{
	class FPackageValue;

	class COREUOBJECT_API FPackageDocument
	{
	public:
		FPackageDocument();
		~FPackageDocument();
		FPackageDocument(const FPackageDocument&) = delete;
		FPackageDocument& operator=(const FPackageDocument&) = delete;

		// False, with a message that names the file, when the file cannot be read or is not a package file of a
		// version this build reads.
		bool Load(const FString& Filename, FString& OutError);

		[[nodiscard]] FPackageValue Root() const;
		[[nodiscard]] int32 GetFormatVersion() const;

		// The first fault that a value found, as "'<file>' is not a valid package file: <where> <what>".
		[[nodiscard]] bool HasFault() const;
		[[nodiscard]] FString DescribeFault() const;

	private:
		friend class FPackageValue;
		struct FImpl;
		std::unique_ptr<FImpl> Impl;
	};

	// One value of the JSON text. A value that is missing or of the wrong kind records a fault in its document;
	// only the first counts, and after it every value reads as empty, so a reader goes on without checking each
	// step and asks the document at the end. A value refers to the value it came from, so values are made from
	// named values only: asking a temporary for a member does not compile.
	class COREUOBJECT_API FPackageValue
	{
	public:
		class FIterator;
		class FElements;

		FPackageValue(const FPackageValue&) = delete;
		FPackageValue& operator=(const FPackageValue&) = delete;

		[[nodiscard]] bool HasMember(const char* Key) const;
		// Key must outlive the value (a literal): it is kept to name the place of a fault.
		[[nodiscard]] FPackageValue Member(const char* Key) const&;
		FPackageValue Member(const char* Key) const&& = delete;

		// The number of elements of a list.
		[[nodiscard]] int64 Num() const;
		[[nodiscard]] FElements Elements() const&;
		FElements Elements() const&& = delete;

		[[nodiscard]] bool IsNull() const;
		[[nodiscard]] bool IsObject() const;
		[[nodiscard]] bool AsBool() const;
		// An integer in [Min, Max]; anything else, a number too large included, is a fault.
		[[nodiscard]] int64 AsInteger(int64 Min, int64 Max) const;
		[[nodiscard]] int32 AsInt32() const;
		[[nodiscard]] float AsFloat() const;
		[[nodiscard]] FString AsString() const;
		// One value of a record, as the field of its layout takes it: an integer in the field's range, or a float.
		[[nodiscard]] uint32 AsRecordWord(const FPackageRecordField& Field) const;

		// A table written by FPackageFileWriter::Records with the same layout, inline or in the binary section.
		void ReadRecords(FPackageRecordLayout Layout, FPackageRecordSink& Sink) const;

		// Records "<where> <Detail>" as a fault, unless one came first.
		void Fail(const FString& Detail) const;
		[[nodiscard]] bool HasFault() const;
		[[nodiscard]] int32 GetFormatVersion() const;
		[[nodiscard]] FString GetPath() const;

	private:
		friend class FPackageDocument;
		// InElement is the JSON element, or null for a value that is missing.
		FPackageValue(const FPackageDocument& InDocument, const FPackageValue* InParent, const char* InKey, int64 InIndex, const void* InElement);

		// The JSON element; null when the value is missing or a fault was found.
		[[nodiscard]] const void* FindElement() const;
		void ReadInlineRecords(FPackageRecordLayout Layout, FPackageRecordSink& Sink) const;
		void ReadBinaryRecords(FPackageRecordLayout Layout, FPackageRecordSink& Sink) const;

		const FPackageDocument& Document;
		const FPackageValue* Parent;
		const char* Key;
		int64 Index;
		bool bPresent = false;
		// The JSON element, held opaquely so that this header does not carry the JSON library.
		alignas(8) uint8 Element[16];
	};

	class COREUOBJECT_API FPackageValue::FIterator
	{
	public:
		[[nodiscard]] FPackageValue operator*() const;
		FIterator& operator++();
		[[nodiscard]] bool operator!=(const FIterator& Other) const { return Index != Other.Index; }

	private:
		friend class FPackageValue::FElements;
		FIterator(const FPackageValue& InList, int64 InIndex);

		const FPackageValue& List;
		int64 Index;
		alignas(8) uint8 Position[16];
	};

	class COREUOBJECT_API FPackageValue::FElements
	{
	public:
		[[nodiscard]] FIterator begin() const;
		[[nodiscard]] FIterator end() const;

	private:
		friend class FPackageValue;
		explicit FElements(const FPackageValue& InList)
			: List(InList)
		{
		}

		const FPackageValue& List;
	};
}
