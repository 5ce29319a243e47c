// Harness-only: Base64 (RFC 4648, with padding), the form in which binary data travels inside a page and in
// Chromium's DevTools protocol.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace UE::Headless
{
	[[nodiscard]] std::string EncodeBase64(const void* Data, size_t Size);

	// False, with no bytes, for text that is not whole groups of four characters of the alphabet with '=' only as padding.
	[[nodiscard]] bool DecodeBase64(std::string_view Text, std::vector<uint8_t>& OutBytes);
}
