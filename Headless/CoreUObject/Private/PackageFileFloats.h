// How package files spell a float so that it reads back with the same bits: the shortest decimal text that
// does, infinities and NaN as words (JSON has no number for them), and a NaN other than the usual quiet one
// with its bits.
#pragma once

#include "HAL/Platform.h"

#include <string_view>

namespace UE::Headless::PackageFileFloats
{
	// Room for the longest text FormatFloat writes.
	inline constexpr int32 MaxTextLength = 32;

	// Writes the text of Value to Buffer; returns its length. A number is written as a JSON number, a word as
	// a JSON string with its quotes.
	int32 FormatFloat(float Value, char* Buffer);

	// The float a word written by FormatFloat stands for ("nan", "inf", "-inf", "nan:0x7fc00001").
	bool ParseFloatWord(std::string_view Word, float& OutValue);
}
