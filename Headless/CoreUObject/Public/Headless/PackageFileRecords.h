// Harness-only: tables of fixed-size records in package files (assembly nodes, bone influences, mesh positions and
// triangles). A small table is written inline as a JSON list of lists; a large one goes to the file's binary
// section as little-endian 32-bit words, and the JSON says where (PackageFileFormat.h).
#pragma once

#include "Containers/ArrayView.h"
#include "HAL/Platform.h"

namespace UE::Headless
{
	enum class EPackageRecordFieldKind : uint8
	{
		Int32,
		Float,
	};

	// One field of a record. An integer field read back outside [Min, Max] makes the file damaged.
	struct FPackageRecordField
	{
		EPackageRecordFieldKind Kind = EPackageRecordFieldKind::Float;
		int64 Min = MIN_int32;
		int64 Max = MAX_int32;
	};

	using FPackageRecordLayout = TConstArrayView<FPackageRecordField>;

	// Records pass between the tables and their sources and sinks in chunks of at most this many: few calls, and
	// a chunk stays in the cache.
	inline constexpr int64 PackageRecordsPerChunk = 4096;

	// Hands a table's records to the writer, in order, each as one 32-bit word per field (an int32's or a
	// float's bits). The writer may ask for them after the codec has returned, so a source owns what it needs.
	class FPackageRecordSource
	{
	public:
		virtual ~FPackageRecordSource() = default;
		virtual void Produce(uint32* OutWords, int64 NumRecords) = 0;
	};

	// Takes a table's records from the reader, in order, already checked against the layout's ranges.
	class FPackageRecordSink
	{
	public:
		virtual ~FPackageRecordSink() = default;
		virtual void Reserve(int64 NumRecords) {}
		virtual void Consume(const uint32* Words, int64 NumRecords) = 0;
	};
}
