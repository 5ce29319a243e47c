// FString, Printf, the UTF-8 converters, FName, FText and the C-string helpers.
#include "PlatformTestUtils.h"

#include "Containers/StringConv.h"
#include "Containers/UnrealString.h"
#include "Headless/TextAccess.h"
#include "Internationalization/Internationalization.h"
#include "Misc/CString.h"

#include <gtest/gtest.h>

using PlatformTest::Utf8;

TEST(CoreString, ComparisonDefaultsFollowTheEngine)
{
	const FString Mixed(TEXT("Mesh_Rock"));
	const FString Lower(TEXT("mesh_rock"));
	// operator== ignores case; Equals and Compare do not unless asked.
	EXPECT_TRUE(Mixed == Lower && Mixed == TEXT("MESH_ROCK"));
	EXPECT_FALSE(Mixed.Equals(Lower));
	EXPECT_TRUE(Mixed.Equals(Lower, ESearchCase::IgnoreCase) && FString().Equals(FString(TEXT(""))));
	EXPECT_NE(Mixed.Compare(Lower), 0);
	EXPECT_EQ(Mixed.Compare(Lower, ESearchCase::IgnoreCase), 0);
	EXPECT_EQ(GetTypeHash(Mixed), GetTypeHash(Lower));
	// StartsWith and EndsWith ignore case unless told otherwise; an empty prefix never matches.
	EXPECT_TRUE(Mixed.StartsWith(TEXT("MESH")) && Mixed.EndsWith(TEXT("ROCK")));
	EXPECT_FALSE(Mixed.StartsWith(TEXT("MESH"), ESearchCase::CaseSensitive) || Mixed.EndsWith(TEXT("ROCK"), ESearchCase::CaseSensitive));
	EXPECT_FALSE(Mixed.StartsWith(TEXT("")) || Mixed.EndsWith(TEXT("_Rock_Mesh_Rock")));
}

TEST(CoreString, SlicingClampsEveryCount)
{
	const FString Text(TEXT("abcdef"));
	const std::pair<FString, std::string> Cases[] = {
		{ Text.Left(2), "ab" }, { Text.Left(-3), "" }, { Text.Left(99), "abcdef" }, { Text.LeftChop(2), "abcd" }, { Text.LeftChop(99), "" },
		{ Text.Right(2), "ef" }, { Text.Right(99), "abcdef" }, { Text.RightChop(4), "ef" }, { Text.RightChop(-1), "abcdef" },
		{ Text.RightChop(99), "" }, { Text.Mid(2), "cdef" }, { Text.Mid(2, 3), "cde" }, { Text.Mid(5, 99), "f" }, { Text.Mid(99), "" },
		// A negative start eats into the count.
		{ Text.Mid(-2, 4), "ab" }, { Text.Mid(-9, 4), "" }, { FString().Left(3), "" },
	};
	for (const auto& Case : Cases)
	{
		EXPECT_EQ(Utf8(Case.first), Case.second);
	}
}

TEST(CoreString, SearchingSplittingAndReplacing)
{
	const FString Text(TEXT("abcABCabc"));
	EXPECT_EQ(Text.Find(TEXT("BC")), 1);
	EXPECT_EQ(Text.Find(TEXT("BC"), ESearchCase::CaseSensitive), 4);
	EXPECT_EQ(Text.Find(TEXT("bc"), ESearchCase::IgnoreCase, ESearchDir::FromEnd), 7);
	EXPECT_EQ(Text.Find(TEXT("bc"), ESearchCase::IgnoreCase, ESearchDir::FromEnd, 7), 4);
	EXPECT_EQ(Text.Find(TEXT("bc"), ESearchCase::IgnoreCase, ESearchDir::FromStart, 8), INDEX_NONE);
	int32 Index = 123;
	EXPECT_TRUE(Text.FindLastChar(TEXT('c'), Index));
	EXPECT_EQ(Index, 8);
	EXPECT_FALSE(Text.FindChar(TEXT('z'), Index));
	EXPECT_EQ(Index, INDEX_NONE);
	const auto IsUpper = [](TCHAR Char) { return Char >= TEXT('A') && Char <= TEXT('Z'); };
	EXPECT_EQ(Text.FindLastCharByPredicate(IsUpper), 5);
	EXPECT_EQ(Text.FindLastCharByPredicate(IsUpper, 3), INDEX_NONE);

	FString Left;
	FString Right;
	ASSERT_TRUE(FString(TEXT("key=value=x")).Split(TEXT("="), &Left, &Right, ESearchCase::IgnoreCase, ESearchDir::FromEnd));
	EXPECT_EQ(Utf8(Left + TEXT("|") + Right), "key=value|x");
	EXPECT_EQ(Utf8(FString(TEXT("Hello HELLO")).Replace(TEXT("hello"), TEXT("bye"))), "bye bye");
	EXPECT_EQ(Utf8(FString(TEXT("Hello HELLO")).Replace(TEXT("hello"), TEXT("bye"), ESearchCase::CaseSensitive)), "Hello HELLO");
	EXPECT_EQ(Utf8(FString(TEXT("aaa")).Replace(TEXT("a"), TEXT("aa"))), "aaaaaa");
	TArray<FString> Parts;
	EXPECT_EQ(FString(TEXT("a,,b,")).ParseIntoArray(Parts, TEXT(","), false), 4);
	EXPECT_EQ(Utf8(FString::Join(Parts, TEXT("|"))), "a||b|");
	EXPECT_EQ(FString(TEXT("a,,b,")).ParseIntoArray(Parts, TEXT(","), true), 2);
	EXPECT_EQ(Utf8(FString(TEXT(" \t x y \r\n")).TrimStartAndEnd()), "x y");
	// Case mapping is ASCII only.
	EXPECT_EQ(Utf8(FString(TEXT("Abz\u00e9")).ToUpper()), "ABZ\u00e9");
	EXPECT_EQ(Utf8(FString(TEXT("/Game")) / TEXT("Meshes") / TEXT("/Rock")), "/Game/Meshes/Rock");
}

TEST(CoreString, PrintfFollowsTheEngineConversions)
{
	EXPECT_EQ(Utf8(FString::Printf(TEXT("%s|%hs|%d|%i|%u|%lld|%c|%%"), TEXT("wide \u00e9"), "narrow", -42, 7, 4000000000u, -9000000000LL, TEXT('Z'))),
		"wide \u00e9|narrow|-42|7|4000000000|-9000000000|Z|%");
	EXPECT_EQ(Utf8(FString::Printf(TEXT("%f %.2f %.0f %e"), 1.5, 3.14159, 2.75, 1500.0)), "1.500000 3.14 3 1.500000e+03");
	EXPECT_EQ(Utf8(FString::Printf(TEXT("[%5d][%-5d][%05d][%+d][%x][%X][%8.3f]"), 42, 42, 42, 42, 255, 255, 3.14159)),
		"[   42][42   ][00042][+42][ff][FF][   3.142]");
	EXPECT_EQ(Utf8(FString::Printf(TEXT("[%-6s][%6s][%.2s][%*d]"), TEXT("ab"), TEXT("ab"), TEXT("abcdef"), 4, 7)), "[ab    ][    ab][ab][   7]");
	EXPECT_EQ(Utf8(FString::FromInt(-2147483647 - 1)), "-2147483648");
}

TEST(CoreString, Utf8ConversionsHandleSurrogatesAndMalformedInput)
{
	// U+00E9, U+20AC and U+1F600 (a surrogate pair in the engine's UTF-16).
	const TCHAR Wide[] = { TEXT('a'), 0x00E9, 0x20AC, 0xD83D, 0xDE00, 0 };
	const FTCHARToUTF8 ToUtf8(Wide);
	EXPECT_EQ(ToUtf8.Length(), 10);
	EXPECT_EQ(std::string((const char*)ToUtf8.Get()), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
	const FUTF8ToTCHAR Back("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
	ASSERT_EQ(Back.Length(), 5);
	EXPECT_TRUE(FString(Back.Get()).Equals(FString(Wide)));

	// Unpaired surrogates, wherever they stand, become '?'.
	const TCHAR Lone[] = { 0xD83D, TEXT('x'), 0xDE00, TEXT('y'), 0xD83D, 0 };
	EXPECT_EQ(std::string((const char*)FTCHARToUTF8(Lone).Get()), "?x?y?");
	// One '?' for every byte that does not start a well-formed sequence: a truncated sequence, a stray
	// continuation byte, an overlong form, an encoded surrogate and a code point past U+10FFFF.
	EXPECT_EQ(Utf8(FString(FUTF8ToTCHAR("a\xE2\x82" "b").Get())), "a??b");
	EXPECT_EQ(Utf8(FString(FUTF8ToTCHAR("\x80z").Get())), "?z");
	EXPECT_EQ(Utf8(FString(FUTF8ToTCHAR("\xC0\xAF").Get())), "??");
	EXPECT_EQ(Utf8(FString(FUTF8ToTCHAR("\xED\xA0\x80").Get())), "???");
	EXPECT_EQ(Utf8(FString(FUTF8ToTCHAR("\xF4\x90\x80\x80").Get())), "????");
	EXPECT_EQ(Utf8(FString(FUTF8ToTCHAR("end\xC3").Get())), "end?");

	// A counted conversion converts every unit it is given, embedded NULs included; the pointer forms
	// stop at the first NUL.
	const FUTF8ToTCHAR Counted("ab\0cd", 5);
	ASSERT_EQ(Counted.Length(), 5);
	EXPECT_EQ(Counted.Get()[2], TEXT('\0'));
	EXPECT_EQ(Counted.Get()[4], TEXT('d'));
	EXPECT_EQ(FUTF8ToTCHAR("ab\0cd").Length(), 2);
	const TCHAR WideWithNul[] = { TEXT('a'), TEXT('b'), 0, TEXT('c'), TEXT('d'), 0 };
	EXPECT_EQ(FTCHARToUTF8(WideWithNul, 5).Length(), 5);
	EXPECT_EQ(FTCHARToUTF8(WideWithNul).Length(), 2);
	EXPECT_EQ(Utf8(FString((const UTF8CHAR*)"caf\xC3\xA9")), "caf\u00e9");
}

TEST(CoreString, NamesCompareWithoutCaseAndKeepTheirSpelling)
{
	const FName First(TEXT("SlotName"));
	const FName Upper(TEXT("SLOTNAME"));
	EXPECT_TRUE(First == Upper && GetTypeHash(First) == GetTypeHash(Upper));
	EXPECT_EQ(Utf8(First) + " " + Utf8(Upper), "SlotName SLOTNAME");

	// "_N" is number N+1; a suffix with a leading zero stays part of the name.
	const FName Numbered(TEXT("Foo_0"));
	EXPECT_EQ(Numbered.GetNumber(), 1);
	EXPECT_EQ(Utf8(Numbered.GetPlainNameString()) + " " + Utf8(Numbered), "Foo Foo_0");
	EXPECT_TRUE(Numbered != FName(TEXT("Foo")));
	EXPECT_TRUE(FName(TEXT("Foo_12")) == FName(FName(TEXT("foo")), 13));
	EXPECT_EQ(FName(TEXT("Foo_01")).GetNumber(), NAME_NO_NUMBER_INTERNAL);
	EXPECT_EQ(Utf8(FName(TEXT("Foo_01")).GetPlainNameString()), "Foo_01");
	EXPECT_EQ(FName(TEXT("Foo_")).GetNumber(), NAME_NO_NUMBER_INTERNAL);

	EXPECT_EQ(Utf8(FName()), "None");
	EXPECT_TRUE(FName(TEXT("")).IsNone() && FName(TEXT("none")) == NAME_None && FName(TEXT("NeverSeenBeforeName42x"), FNAME_Find).IsNone());
	EXPECT_TRUE(FName(TEXT("apple")).LexicalLess(FName(TEXT("Banana"))));
}

TEST(CoreString, TextAndCStringHelpers)
{
	const FText Localised = NSLOCTEXT("HeadlessTests", "Greeting", "Hello");
	EXPECT_EQ(Utf8(Localised), "Hello");
	EXPECT_EQ(Utf8(UE::Headless::FTextAccess::GetNamespace(Localised) + TEXT(".") + UE::Headless::FTextAccess::GetKey(Localised)), "HeadlessTests.Greeting");
	EXPECT_TRUE(Localised.EqualTo(FText::FromString(TEXT("Hello"))));
	EXPECT_FALSE(Localised.EqualTo(FText::FromString(TEXT("hello"))) || Localised.IdenticalTo(FText::FromString(TEXT("Hello"))));
	EXPECT_EQ(Utf8(FText::FromName(FName(TEXT("Slot_3")))), "Slot_3");

	// Letters fold in the ASCII range only; other characters compare as unsigned code units.
	EXPECT_EQ(FCString::Stricmp(TEXT("Rock"), TEXT("rOCK")), 0);
	EXPECT_LT(FCString::Stricmp(TEXT("abc"), TEXT("ABD")), 0);
	EXPECT_GT(FCString::Stricmp(TEXT("abcd"), TEXT("ABC")), 0);
	EXPECT_NE(FCString::Stricmp(TEXT("\u00e9"), TEXT("\u00c9")), 0);
	EXPECT_EQ(FCString::Strnicmp(TEXT("MeshA"), TEXT("meshB"), 4), 0);
	EXPECT_NE(FCString::Strnicmp(TEXT("MeshA"), TEXT("meshB"), 5), 0);
	EXPECT_EQ(FGenericPlatformStricmp::Stricmp((const UTF8CHAR*)"xYz", (const UTF8CHAR*)"XyZ") + FGenericPlatformStricmp::Stricmp(U"Q", U"q"), 0);
	EXPECT_GT(FCStringAnsi::Stricmp("\xE9", "z"), 0);
}
