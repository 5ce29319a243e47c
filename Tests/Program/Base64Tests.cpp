// Base64 as the page's data and Chromium's pictures use it.
#include "Headless/Base64.h"

#include <gtest/gtest.h>

namespace
{
	using namespace UE::Headless;

	std::string Encode(const std::string& Text)
	{
		return EncodeBase64(Text.data(), Text.size());
	}

	std::string Decode(const std::string& Text)
	{
		std::vector<uint8_t> Bytes = { 42 };
		if (!DecodeBase64(Text, Bytes))
		{
			return Bytes.empty() ? "refused" : "refused, with bytes left";
		}
		return std::string(Bytes.begin(), Bytes.end());
	}
}

TEST(Base64, EncodesAndDecodesTheStandardVectors)
{
	// RFC 4648, section 10.
	const std::pair<std::string, std::string> Vectors[] = { { "", "" }, { "f", "Zg==" }, { "fo", "Zm8=" }, { "foo", "Zm9v" }, { "foob", "Zm9vYg==" },
		{ "fooba", "Zm9vYmE=" }, { "foobar", "Zm9vYmFy" } };
	for (const auto& [Text, Encoded] : Vectors)
	{
		EXPECT_EQ(Encode(Text), Encoded);
		EXPECT_EQ(Decode(Encoded), Text);
	}
	// Every byte value, and the two characters past the letters and digits.
	std::string Bytes;
	for (int Value = 0; Value < 256; ++Value)
	{
		Bytes += (char)Value;
	}
	EXPECT_EQ(Decode(Encode(Bytes)), Bytes);
	EXPECT_EQ(Encode("\xfb\xff\xbf"), "+/+/");
}

TEST(Base64, RefusesWhatIsNotWholeGroupsOfItsAlphabet)
{
	for (const char* Text : { "Zg=", "Zm9vY", "Zg=a", "Z===", "====", "=Zm9", "Zg==Zg==", "Zm9v!A==", "Zm 9v", "Zm9v\n", "Zm9-", "Zm9_" })
	{
		EXPECT_EQ(Decode(Text), "refused") << Text;
	}
}
