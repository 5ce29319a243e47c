#include "PackageFileFloats.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace UE::Headless::PackageFileFloats
{
	namespace
	{
		constexpr uint32 CanonicalNaN = 0x7fc00000u;

		int32 Quoted(const char* Word, char* Buffer)
		{
			return (int32)std::snprintf(Buffer, MaxTextLength, "\"%s\"", Word);
		}
	}

	int32 FormatFloat(float Value, char* Buffer)
	{
		if (std::isnan(Value))
		{
			const uint32 Bits = std::bit_cast<uint32>(Value);
			return Bits == CanonicalNaN ? Quoted("nan", Buffer) : (int32)std::snprintf(Buffer, MaxTextLength, "\"nan:0x%08x\"", Bits);
		}
		if (std::isinf(Value))
		{
			return Quoted(Value > 0 ? "inf" : "-inf", Buffer);
		}
		// A JSON reader takes "-0" for the integer 0, which has no sign.
		if (Value == 0.0f && std::signbit(Value))
		{
			std::memcpy(Buffer, "-0.0", 4);
			return 4;
		}
		// The shortest text for a float is read back through a double, which can round once more: then the
		// double's own shortest text is written, which a double holds exactly.
		std::to_chars_result Result = std::to_chars(Buffer, Buffer + MaxTextLength, Value);
		*Result.ptr = '\0';
		if ((float)std::strtod(Buffer, nullptr) != Value)
		{
			Result = std::to_chars(Buffer, Buffer + MaxTextLength, (double)Value);
		}
		return (int32)(Result.ptr - Buffer);
	}

	bool ParseFloatWord(std::string_view Word, float& OutValue)
	{
		if (Word == "nan")
		{
			OutValue = std::bit_cast<float>(CanonicalNaN);
			return true;
		}
		if (Word == "inf" || Word == "-inf")
		{
			OutValue = Word == "inf" ? INFINITY : -INFINITY;
			return true;
		}
		constexpr std::string_view Prefix = "nan:0x";
		if (Word.size() != Prefix.size() + 8 || Word.substr(0, Prefix.size()) != Prefix)
		{
			return false;
		}
		uint32 Bits = 0;
		const char* End = Word.data() + Word.size();
		const std::from_chars_result Result = std::from_chars(Word.data() + Prefix.size(), End, Bits, 16);
		OutValue = std::bit_cast<float>(Bits);
		return Result.ec == std::errc() && Result.ptr == End && std::isnan(OutValue);
	}
}
