// Small helpers shared by the platform tests.
#pragma once

#include "Containers/UnrealString.h"
#include "Headless/EngineLog.h"
#include "Headless/StringUtils.h"
#include "Internationalization/Text.h"
#include "UObject/NameTypes.h"

#include <string>
#include <vector>

namespace PlatformTest
{
	// FString's operator== ignores case; tests compare the exact text as UTF-8 instead, which also prints well.
	inline std::string Utf8(const FString& Text)
	{
		return UE::Headless::ToUtf8(Text);
	}

	inline std::string Utf8(const FText& Text)
	{
		return UE::Headless::ToUtf8(Text.ToString());
	}

	inline std::string Utf8(const FName& Name)
	{
		return UE::Headless::ToUtf8(Name.ToString());
	}

	// The messages logged in one category since the log was last cleared, as "Verbosity: Message".
	inline std::vector<std::string> LogOf(const TCHAR* Category)
	{
		std::vector<std::string> Lines;
		for (const UE::Headless::FEngineLogLine& Line : UE::Headless::GetEngineLog())
		{
			if (Line.Category.Equals(Category, ESearchCase::CaseSensitive))
			{
				Lines.push_back(Utf8(FString(::ToString(Line.Verbosity))) + ": " + Utf8(Line.Message));
			}
		}
		return Lines;
	}
}
