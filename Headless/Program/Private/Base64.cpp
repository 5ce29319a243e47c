#include "Headless/Base64.h"

#include <array>

namespace UE::Headless
{
	namespace
	{
		constexpr char Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
		constexpr int8_t NotInAlphabet = -1;

		constexpr std::array<int8_t, 256> MakeDecodeTable()
		{
			std::array<int8_t, 256> Table{};
			Table.fill(NotInAlphabet);
			for (int Index = 0; Index < 64; ++Index)
			{
				Table[(uint8_t)Alphabet[Index]] = (int8_t)Index;
			}
			return Table;
		}

		constexpr std::array<int8_t, 256> DecodeTable = MakeDecodeTable();
	}

	std::string EncodeBase64(const void* Data, size_t Size)
	{
		const uint8_t* Bytes = static_cast<const uint8_t*>(Data);
		std::string Text;
		Text.reserve((Size + 2) / 3 * 4);
		size_t Index = 0;
		for (; Index + 3 <= Size; Index += 3)
		{
			const uint32_t Group = (uint32_t)Bytes[Index] << 16 | (uint32_t)Bytes[Index + 1] << 8 | Bytes[Index + 2];
			Text += Alphabet[Group >> 18];
			Text += Alphabet[(Group >> 12) & 63];
			Text += Alphabet[(Group >> 6) & 63];
			Text += Alphabet[Group & 63];
		}
		const size_t Rest = Size - Index;
		if (Rest > 0)
		{
			const uint32_t Group = (uint32_t)Bytes[Index] << 16 | (Rest == 2 ? (uint32_t)Bytes[Index + 1] << 8 : 0);
			Text += Alphabet[Group >> 18];
			Text += Alphabet[(Group >> 12) & 63];
			Text += Rest == 2 ? Alphabet[(Group >> 6) & 63] : '=';
			Text += '=';
		}
		return Text;
	}

	bool DecodeBase64(std::string_view Text, std::vector<uint8_t>& OutBytes)
	{
		OutBytes.clear();
		if (Text.size() % 4 != 0)
		{
			return false;
		}
		OutBytes.reserve(Text.size() / 4 * 3);
		for (size_t Index = 0; Index < Text.size(); Index += 4)
		{
			const bool bLast = Index + 4 == Text.size();
			const int Padding = bLast ? (Text[Index + 3] == '=') + (Text[Index + 2] == '=') : 0;
			uint32_t Group = 0;
			for (int Offset = 0; Offset < 4; ++Offset)
			{
				const int8_t Value = Offset < 4 - Padding ? DecodeTable[(uint8_t)Text[Index + Offset]] : 0;
				if (Value == NotInAlphabet)
				{
					OutBytes.clear();
					return false;
				}
				Group = Group << 6 | (uint32_t)Value;
			}
			OutBytes.push_back((uint8_t)(Group >> 16));
			if (Padding < 2)
			{
				OutBytes.push_back((uint8_t)(Group >> 8));
			}
			if (Padding < 1)
			{
				OutBytes.push_back((uint8_t)Group);
			}
		}
		return true;
	}
}
