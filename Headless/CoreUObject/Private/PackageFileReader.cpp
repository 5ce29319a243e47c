#include "Headless/PackageFileReader.h"

#include "Headless/PackageFileFormat.h"
#include "Headless/PackageFileStore.h"
#include "Headless/StringUtils.h"
#include "PackageFileFloats.h"

#include <simdjson.h>
#include <xxhash.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

namespace
{
	using FElement = simdjson::dom::element;
	using FArrayPosition = simdjson::dom::array::iterator;
	using EJsonType = simdjson::dom::element_type;
	static_assert(sizeof(FElement) <= 16 && alignof(FElement) <= 8 && std::is_trivially_copyable_v<FElement>);
	static_assert(sizeof(FArrayPosition) <= 16 && alignof(FArrayPosition) <= 8 && std::is_trivially_copyable_v<FArrayPosition>);

	// simdjson gives the count of a list this long or longer as this, and it must be counted.
	constexpr size_t SaturatedListSize = 0xFFFFFF;

	const FElement& ElementAt(const uint8* Storage)
	{
		return *std::launder(reinterpret_cast<const FElement*>(Storage));
	}

	FArrayPosition& PositionAt(uint8* Storage)
	{
		return *std::launder(reinterpret_cast<FArrayPosition*>(Storage));
	}

	const FArrayPosition& PositionAt(const uint8* Storage)
	{
		return *std::launder(reinterpret_cast<const FArrayPosition*>(Storage));
	}

	FString Damaged(const FString& Filename, const FString& Detail)
	{
		return FString::Printf(TEXT("'%s' is not a valid package file: %s"), *Filename, *Detail);
	}
}

namespace UE::Headless
{
	struct FPackageDocument::FImpl
	{
		FString Filename;
		FMappedFile File;
		// The JSON text, copied with the padding that simdjson reads past its end.
		simdjson::padded_string Text;
		simdjson::dom::parser Parser;
		FElement Root;
		int32 Version = 0;
		// The tables of the binary section, without its marker and checksum.
		const uint8* Binary = nullptr;
		int64 BinarySize = 0;
		bool bFault = false;
		FString Fault;

		void Record(const FString& Where, const FString& Detail)
		{
			if (!bFault)
			{
				bFault = true;
				Fault = Where.IsEmpty() ? Detail : Where + TEXT(" ") + Detail;
			}
		}

		bool Refuse(const FString& Detail, FString& OutError) const
		{
			OutError = Damaged(Filename, Detail);
			return false;
		}

		bool CheckVersion(const simdjson::dom::object& Object, FString& OutError);
		bool CheckBinarySection(const simdjson::dom::object& Object, int64 TextSize, FString& OutError);
	};

	FPackageDocument::FPackageDocument() = default;

	FPackageDocument::~FPackageDocument() = default;

	bool FPackageDocument::Load(const FString& Filename, FString& OutError)
	{
		Impl = std::make_unique<FImpl>();
		Impl->Filename = Filename;
		if (!Impl->File.Open(Filename, OutError))
		{
			return false;
		}
		const char* Bytes = reinterpret_cast<const char*>(Impl->File.GetData());
		const int64 Size = Impl->File.GetSize();
		if (Size == 0)
		{
			return Impl->Refuse(TEXT("it is empty"), OutError);
		}
		// No JSON text holds a NUL byte: the first one is where the binary section starts.
		const void* Marker = std::memchr(Bytes, 0, (size_t)Size);
		const int64 TextSize = Marker ? static_cast<const char*>(Marker) - Bytes : Size;
		Impl->Text = simdjson::padded_string(Bytes, (size_t)TextSize);
		const simdjson::error_code ParseError = Impl->Parser.parse(Impl->Text).get(Impl->Root);
		if (ParseError == simdjson::EMPTY)
		{
			return Impl->Refuse(TEXT("it holds no JSON text"), OutError);
		}
		if (ParseError)
		{
			return Impl->Refuse(FString::Printf(TEXT("its JSON text is damaged: %hs"), simdjson::error_message(ParseError)), OutError);
		}
		simdjson::dom::object Object;
		std::string_view Format;
		if (Impl->Root.get_object().get(Object) || Object["format"].get_string().get(Format) || Format != PackageFileFormatName)
		{
			return Impl->Refuse(FString::Printf(TEXT("its format is not '%hs'"), PackageFileFormatName), OutError);
		}
		return Impl->CheckVersion(Object, OutError) && Impl->CheckBinarySection(Object, TextSize, OutError);
	}

	bool FPackageDocument::FImpl::CheckVersion(const simdjson::dom::object& Object, FString& OutError)
	{
		FElement Element;
		if (Object["version"].get(Element) || (Element.type() != EJsonType::INT64 && Element.type() != EJsonType::UINT64))
		{
			return Refuse(TEXT("its version is not a whole number"), OutError);
		}
		if (Element.type() == EJsonType::UINT64 || Element.get_int64().value_unsafe() > PackageFileFormatVersion)
		{
			const FString Written = Element.type() == EJsonType::UINT64 ? FString::Printf(TEXT("%llu"), (unsigned long long)Element.get_uint64().value_unsafe())
														: FString::Printf(TEXT("%lld"), (long long)Element.get_int64().value_unsafe());
			return Refuse(FString::Printf(TEXT("it was written by a newer format version %s; this build reads up to %d"), *Written,
							  PackageFileFormatVersion),
				OutError);
		}
		const int64 Written = Element.get_int64().value_unsafe();
		if (Written < OldestPackageFileFormatVersion)
		{
			return Refuse(FString::Printf(TEXT("its version %lld is not one this build reads (%d to %d)"), (long long)Written, OldestPackageFileFormatVersion,
							  PackageFileFormatVersion),
				OutError);
		}
		Version = (int32)Written;
		return true;
	}

	// The section is a NUL byte, the tables (binary_size bytes) and their 64-bit XXH3 hash, little-endian.
	bool FPackageDocument::FImpl::CheckBinarySection(const simdjson::dom::object& Object, int64 TextSize, FString& OutError)
	{
		const int64 Trailing = File.GetSize() - TextSize;
		FElement SizeElement;
		if (Object["binary_size"].get(SizeElement))
		{
			return Trailing == 0 || Refuse(TEXT("it has bytes after its JSON text"), OutError);
		}
		if (Version < 2)
		{
			return Refuse(FString::Printf(TEXT("it announces a binary section, which files of version %d do not have"), Version), OutError);
		}
		int64_t Announced = 0;
		if (SizeElement.type() != EJsonType::INT64 || SizeElement.get_int64().get(Announced) || Announced < 0)
		{
			return Refuse(TEXT("binary_size is not a whole number of bytes"), OutError);
		}
		const int64 Expected = 1 + Announced + (int64)sizeof(XXH64_hash_t);
		if (Trailing < Expected)
		{
			return Refuse(FString::Printf(TEXT("its binary section is truncated: %lld bytes should follow its JSON text, %lld do"), (long long)Expected,
							  (long long)Trailing),
				OutError);
		}
		if (Trailing > Expected)
		{
			return Refuse(FString::Printf(TEXT("it has %lld bytes after its binary section"), (long long)(Trailing - Expected)), OutError);
		}
		Binary = File.GetData() + TextSize + 1;
		BinarySize = Announced;
		XXH64_hash_t Stored;
		std::memcpy(&Stored, Binary + BinarySize, sizeof(Stored));
		if (XXH3_64bits(Binary, (size_t)BinarySize) != Stored)
		{
			return Refuse(TEXT("its binary section does not match its checksum"), OutError);
		}
		return true;
	}

	FPackageValue FPackageDocument::Root() const
	{
		return FPackageValue(*this, nullptr, nullptr, -1, Impl ? &Impl->Root : nullptr);
	}

	int32 FPackageDocument::GetFormatVersion() const
	{
		return Impl ? Impl->Version : 0;
	}

	bool FPackageDocument::HasFault() const
	{
		return Impl && Impl->bFault;
	}

	FString FPackageDocument::DescribeFault() const
	{
		return Impl ? Damaged(Impl->Filename, Impl->Fault) : FString();
	}

	FPackageValue::FPackageValue(const FPackageDocument& InDocument, const FPackageValue* InParent, const char* InKey, int64 InIndex, const void* InElement)
		: Document(InDocument)
		, Parent(InParent)
		, Key(InKey)
		, Index(InIndex)
		, bPresent(InElement != nullptr)
	{
		if (InElement)
		{
			new (Element) FElement(*static_cast<const FElement*>(InElement));
		}
	}

	const void* FPackageValue::FindElement() const
	{
		return bPresent && !Document.Impl->bFault ? &ElementAt(Element) : nullptr;
	}

	FString FPackageValue::GetPath() const
	{
		FString Path = Parent ? Parent->GetPath() : FString();
		if (Key)
		{
			Path += Path.IsEmpty() ? FromUtf8(Key) : TEXT(".") + FromUtf8(Key);
		}
		else if (Parent)
		{
			Path += FString::Printf(TEXT("[%lld]"), (long long)Index);
		}
		return Path;
	}

	void FPackageValue::Fail(const FString& Detail) const
	{
		if (!Document.Impl->bFault)
		{
			Document.Impl->Record(GetPath(), Detail);
		}
	}

	bool FPackageValue::HasFault() const
	{
		return Document.Impl->bFault;
	}

	int32 FPackageValue::GetFormatVersion() const
	{
		return Document.Impl->Version;
	}

	bool FPackageValue::HasMember(const char* InKey) const
	{
		const FElement* Self = static_cast<const FElement*>(FindElement());
		FElement Child;
		return Self && Self->is_object() && !Self->get_object().value_unsafe().at_key(InKey).get(Child);
	}

	FPackageValue FPackageValue::Member(const char* InKey) const&
	{
		const FElement* Self = static_cast<const FElement*>(FindElement());
		FElement Child;
		bool bFound = false;
		if (Self && !Self->is_object())
		{
			Fail(TEXT("is not an object"));
		}
		else if (Self)
		{
			bFound = !Self->get_object().value_unsafe().at_key(InKey).get(Child);
		}
		if (Self && !bFound)
		{
			const FString Path = GetPath();
			Document.Impl->Record(Path.IsEmpty() ? FromUtf8(InKey) : Path + TEXT(".") + FromUtf8(InKey), TEXT("is missing"));
		}
		return FPackageValue(Document, this, InKey, -1, bFound ? &Child : nullptr);
	}

	int64 FPackageValue::Num() const
	{
		const FElement* Self = static_cast<const FElement*>(FindElement());
		if (!Self)
		{
			return 0;
		}
		simdjson::dom::array Array;
		if (Self->get_array().get(Array))
		{
			Fail(TEXT("is not a list"));
			return 0;
		}
		const size_t Size = Array.size();
		if (Size < SaturatedListSize)
		{
			return (int64)Size;
		}
		int64 Counted = 0;
		for (FArrayPosition It = Array.begin(); It != Array.end(); ++It)
		{
			++Counted;
		}
		return Counted;
	}

	FPackageValue::FElements FPackageValue::Elements() const&
	{
		return FElements(*this);
	}

	bool FPackageValue::IsNull() const
	{
		const FElement* Self = static_cast<const FElement*>(FindElement());
		return Self && Self->is_null();
	}

	bool FPackageValue::IsObject() const
	{
		const FElement* Self = static_cast<const FElement*>(FindElement());
		return Self && Self->is_object();
	}

	bool FPackageValue::AsBool() const
	{
		const FElement* Self = static_cast<const FElement*>(FindElement());
		bool bValue = false;
		if (Self && Self->get_bool().get(bValue))
		{
			Fail(TEXT("is not true or false"));
		}
		return bValue;
	}

	int64 FPackageValue::AsInteger(int64 Min, int64 Max) const
	{
		const FElement* Self = static_cast<const FElement*>(FindElement());
		if (!Self)
		{
			return 0;
		}
		const FString Range = FString::Printf(TEXT(" is not from %lld to %lld"), (long long)Min, (long long)Max);
		if (Self->type() == EJsonType::UINT64)
		{
			Fail(FString::Printf(TEXT("is out of range: %llu"), (unsigned long long)Self->get_uint64().value_unsafe()) + Range);
			return 0;
		}
		int64_t Value = 0;
		if (Self->type() != EJsonType::INT64 || Self->get_int64().get(Value))
		{
			Fail(TEXT("is not a whole number"));
			return 0;
		}
		if (Value < Min || Value > Max)
		{
			Fail(FString::Printf(TEXT("is out of range: %lld"), (long long)Value) + Range);
			return 0;
		}
		return Value;
	}

	int32 FPackageValue::AsInt32() const
	{
		return (int32)AsInteger(MIN_int32, MAX_int32);
	}

	uint32 FPackageValue::AsRecordWord(const FPackageRecordField& Field) const
	{
		return Field.Kind == EPackageRecordFieldKind::Int32 ? std::bit_cast<uint32>((int32)AsInteger(Field.Min, Field.Max)) : std::bit_cast<uint32>(AsFloat());
	}

	float FPackageValue::AsFloat() const
	{
		const FElement* Self = static_cast<const FElement*>(FindElement());
		if (!Self)
		{
			return 0.0f;
		}
		std::string_view Word;
		if (!Self->get_string().get(Word))
		{
			float Value = 0.0f;
			if (!PackageFileFloats::ParseFloatWord(Word, Value))
			{
				Fail(FString::Printf(TEXT("is not a number: '%s'"), *FromUtf8(Word)));
			}
			return Value;
		}
		// A whole number is exact as a double up to 2^53, further than any that a float's shortest text spells out.
		double Number = 0.0;
		if (Self->type() == EJsonType::INT64)
		{
			Number = (double)Self->get_int64().value_unsafe();
		}
		else if (Self->type() == EJsonType::UINT64)
		{
			Number = (double)Self->get_uint64().value_unsafe();
		}
		else if (Self->get_double().get(Number))
		{
			Fail(TEXT("is not a number"));
			return 0.0f;
		}
		const float Value = (float)Number;
		if (std::isinf(Value))
		{
			Fail(FString::Printf(TEXT("is out of range: %g is too large for a float"), Number));
			return 0.0f;
		}
		return Value;
	}

	FString FPackageValue::AsString() const
	{
		const FElement* Self = static_cast<const FElement*>(FindElement());
		std::string_view Text;
		if (Self && Self->get_string().get(Text))
		{
			Fail(TEXT("is not a text"));
		}
		return FromUtf8(Text);
	}

	void FPackageValue::ReadRecords(FPackageRecordLayout Layout, FPackageRecordSink& Sink) const
	{
		const FElement* Self = static_cast<const FElement*>(FindElement());
		if (!Self)
		{
			return;
		}
		if (Self->is_array())
		{
			ReadInlineRecords(Layout, Sink);
		}
		else if (Self->is_object())
		{
			ReadBinaryRecords(Layout, Sink);
		}
		else
		{
			Fail(TEXT("is neither a list of records nor a table of the binary section"));
		}
	}

	void FPackageValue::ReadInlineRecords(FPackageRecordLayout Layout, FPackageRecordSink& Sink) const
	{
		const int32 NumFields = Layout.Num();
		const int64 NumRecords = Num();
		Sink.Reserve(NumRecords);
		std::vector<uint32> Words;
		Words.reserve((size_t)(std::min(NumRecords, PackageRecordsPerChunk) * NumFields));
		for (const FPackageValue& Record : Elements())
		{
			const int64 NumValues = Record.Num();
			if (NumValues != NumFields)
			{
				Record.Fail(FString::Printf(TEXT("has %lld values instead of %d"), (long long)NumValues, NumFields));
			}
			int32 Field = 0;
			for (const FPackageValue& Value : Record.Elements())
			{
				Words.push_back(Value.AsRecordWord(Layout[Field++]));
			}
			if (HasFault())
			{
				return;
			}
			if ((int64)Words.size() == PackageRecordsPerChunk * NumFields)
			{
				Sink.Consume(Words.data(), PackageRecordsPerChunk);
				Words.clear();
			}
		}
		if (!Words.empty())
		{
			Sink.Consume(Words.data(), (int64)Words.size() / NumFields);
		}
	}

	void FPackageValue::ReadBinaryRecords(FPackageRecordLayout Layout, FPackageRecordSink& Sink) const
	{
		const FPackageValue OffsetValue = Member("offset");
		const FPackageValue CountValue = Member("count");
		const int64 Offset = OffsetValue.AsInteger(0, INT64_MAX);
		const int64 NumRecords = CountValue.AsInteger(0, MAX_int32);
		if (HasFault())
		{
			return;
		}
		const FPackageDocument::FImpl& Source = *Document.Impl;
		const int32 NumFields = Layout.Num();
		const int64 RecordSize = NumFields * (int64)sizeof(uint32);
		if (Offset > Source.BinarySize || NumRecords > (Source.BinarySize - Offset) / RecordSize)
		{
			Fail(FString::Printf(TEXT("does not fit in the binary section: %lld records of %lld bytes from byte %lld, in a section of %lld bytes"),
				(long long)NumRecords, (long long)RecordSize, (long long)Offset, (long long)Source.BinarySize));
			return;
		}
		// Only fields narrower than a whole int32 can be out of range.
		std::vector<int32> CheckedFields;
		for (int32 Field = 0; Field < NumFields; ++Field)
		{
			if (Layout[Field].Kind == EPackageRecordFieldKind::Int32 && (Layout[Field].Min > MIN_int32 || Layout[Field].Max < MAX_int32))
			{
				CheckedFields.push_back(Field);
			}
		}
		Sink.Reserve(NumRecords);
		std::vector<uint32> Words((size_t)(std::min(NumRecords, PackageRecordsPerChunk) * NumFields));
		const uint8* Bytes = Source.Binary + Offset;
		for (int64 First = 0; First < NumRecords; First += PackageRecordsPerChunk)
		{
			const int64 Count = std::min(PackageRecordsPerChunk, NumRecords - First);
			std::memcpy(Words.data(), Bytes + First * RecordSize, (size_t)(Count * RecordSize));
			for (const int32 Field : CheckedFields)
			{
				const FPackageRecordField& Rule = Layout[Field];
				for (int64 Record = 0; Record < Count; ++Record)
				{
					const int32 Value = std::bit_cast<int32>(Words[(size_t)(Record * NumFields + Field)]);
					if (Value < Rule.Min || Value > Rule.Max)
					{
						Document.Impl->Record(GetPath() + FString::Printf(TEXT("[%lld][%d]"), (long long)(First + Record), Field),
							FString::Printf(TEXT("is out of range: %d is not from %lld to %lld"), Value, (long long)Rule.Min, (long long)Rule.Max));
						return;
					}
				}
			}
			Sink.Consume(Words.data(), Count);
		}
	}

	FPackageValue::FIterator::FIterator(const FPackageValue& InList, int64 InIndex)
		: List(InList)
		, Index(InIndex)
	{
	}

	FPackageValue FPackageValue::FIterator::operator*() const
	{
		const FElement Child = *PositionAt(Position);
		return FPackageValue(List.Document, &List, nullptr, Index, &Child);
	}

	FPackageValue::FIterator& FPackageValue::FIterator::operator++()
	{
		++PositionAt(Position);
		++Index;
		return *this;
	}

	FPackageValue::FIterator FPackageValue::FElements::begin() const
	{
		FIterator First(List, 0);
		const FElement* Self = static_cast<const FElement*>(List.FindElement());
		simdjson::dom::array Array;
		if (Self && !Self->get_array().get(Array))
		{
			new (First.Position) FArrayPosition(Array.begin());
		}
		return First;
	}

	FPackageValue::FIterator FPackageValue::FElements::end() const
	{
		return FIterator(List, List.Num());
	}
}
