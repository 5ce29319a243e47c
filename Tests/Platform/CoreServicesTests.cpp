// Containers, delegates, console variables, the engine version, paths and archives.
#include "PlatformTestUtils.h"

#include "Containers/Array.h"
#include "Containers/ArrayView.h"
#include "Delegates/Delegate.h"
#include "HAL/IConsoleManager.h"
#include "Headless/Environment.h"
#include "Math/TransformVectorized.h"
#include "Misc/EngineVersion.h"
#include "Misc/Paths.h"
#include "RenderUtils.h"
#include "Serialization/MemoryReader.h"
#include "Serialization/MemoryWriter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>

using PlatformTest::Utf8;

namespace
{
	FString Describe(int32 Value, FString Prefix, int32 Scale)
	{
		return Prefix + FString::FromInt(Value * Scale);
	}

	int32 Sum(TArrayView<const int32> Values)
	{
		int32 Total = 0;
		for (const int32 Value : Values)
		{
			Total += Value;
		}
		return Total;
	}
}

TEST(CoreContainers, ArrayOperationsKeepOrderAndAliasSafety)
{
	TArray<FString> Names;
	Names.Add(TEXT("first"));
	while (Names.Num() < Names.Max())
	{
		Names.Add(TEXT("filler"));
	}
	// At capacity the array must copy its own element before its buffer moves.
	Names.Add(Names[0]);
	EXPECT_EQ(Utf8(Names.Last()), "first");
	const int32 Count = Names.Num();
	Names.Append(Names.GetData(), Count);
	ASSERT_EQ(Names.Num(), Count * 2);
	EXPECT_EQ(Utf8(Names[Count]), "first");

	TArray<int32> Numbers = { 5, 3, 5, 1 };
	EXPECT_EQ(Numbers.AddUnique(3), 1);
	EXPECT_EQ(Numbers.Remove(5), 2);
	Numbers.SetNum(4);
	EXPECT_TRUE(Numbers == TArray<int32>({ 3, 1, 0, 0 }));
	const int32 Fixed[] = { 1, 2, 3 };
	EXPECT_EQ(Sum(Fixed), 6);
	EXPECT_EQ(Sum(MakeConstArrayView(Numbers.GetData() + 1, 2)), 1);
}

// Every way of adding grows the allocation geometrically (a serialiser adds a few bytes at a time to
// buffers of megabytes); only Reserve allocates exactly what it is asked for.
TEST(CoreContainers, AddingGrowsGeometricallyAndReserveIsExact)
{
	auto CountReallocations = [](auto&& AddOne)
	{
		TArray<uint8> Bytes;
		int32 Reallocations = 0;
		for (int32 Index = 0; Index < 100000; ++Index)
		{
			const int32 Before = Bytes.Max();
			AddOne(Bytes);
			Reallocations += Bytes.Max() != Before ? 1 : 0;
		}
		EXPECT_EQ(Bytes.Num(), 100000);
		return Reallocations;
	};
	EXPECT_LT(CountReallocations([](TArray<uint8>& Bytes) { Bytes.AddUninitialized(1); }), 40);
	EXPECT_LT(CountReallocations([](TArray<uint8>& Bytes) { Bytes.AddDefaulted(1); }), 40);
	EXPECT_LT(CountReallocations([](TArray<uint8>& Bytes) { Bytes.Add(7); }), 40);
	EXPECT_LT(CountReallocations([](TArray<uint8>& Bytes) { const uint8 One = 1; Bytes.Append(&One, 1); }), 40);
	EXPECT_LT(CountReallocations([](TArray<uint8>& Bytes) { Bytes.SetNum(Bytes.Num() + 1); }), 40);

	TArray<uint8> Exact;
	Exact.Reserve(1000);
	EXPECT_EQ(Exact.Max(), 1000);
	Exact.Reserve(10);
	EXPECT_EQ(Exact.Max(), 1000);
}

TEST(CoreDelegates, StaticDelegatesCarryTheirPayload)
{
	FString Prefix(TEXT("n="));
	const TDelegate<FString(int32)> Delegate = TDelegate<FString(int32)>::CreateStatic(&Describe, Prefix, 10);
	// The payload is copied when the delegate is made.
	Prefix = TEXT("changed");
	EXPECT_EQ(Utf8(Delegate.Execute(4)), "n=40");
	EXPECT_FALSE(TDelegate<void(int32)>().ExecuteIfBound(1));

	// A handler removed during a broadcast still hears that broadcast, not the next one.
	TMulticastDelegate<void(int32)> Multicast;
	TArray<int32> Calls;
	FDelegateHandle Second;
	Multicast.AddLambda([&](int32 Value) { Calls.Add(Value); Multicast.Remove(Second); });
	Second = Multicast.AddLambda([&](int32 Value) { Calls.Add(Value * 100); });
	Multicast.Broadcast(1);
	Multicast.Broadcast(2);
	EXPECT_TRUE(Calls == TArray<int32>({ 1, 100, 2 }));
}

TEST(CoreConsoleVariables, ReadOnlyVariablesTakeOnlyProjectSettings)
{
	UE::Headless::ResetConsoleVariables();
	IConsoleVariable* Allow = IConsoleManager::Get().FindConsoleVariable(TEXT("R.NANITE.ALLOWASSEMBLIES"));
	ASSERT_NE(Allow, nullptr);
	EXPECT_EQ(Allow->GetInt(), 0);
	EXPECT_EQ(Allow->GetFlags() & ECVF_ReadOnly, (uint32)ECVF_ReadOnly);
	EXPECT_EQ(Utf8(FString(Allow->GetHelp())), "Whether to enable support for Nanite Assemblies");
	EXPECT_EQ(Utf8(FString(IConsoleManager::Get().FindConsoleVariable(TEXT("r.Nanite.Foliage"))->GetHelp())), "Whether to enable support for Nanite Foliage");
	Allow->Set(TEXT("1"));
	EXPECT_EQ(Allow->GetInt(), 0);
	EXPECT_FALSE(NaniteAssembliesSupported());

	// The support query reads the variables at every call.
	EXPECT_TRUE(UE::Headless::SetConsoleVariable(TEXT("r.Nanite.AllowAssemblies"), TEXT("1")));
	EXPECT_TRUE(NaniteAssembliesSupported());
	UE::Headless::ResetConsoleVariables();
	EXPECT_FALSE(NaniteAssembliesSupported());
	EXPECT_TRUE(UE::Headless::SetConsoleVariable(TEXT(" r.Nanite.Foliage "), TEXT("yes")));
	EXPECT_TRUE(NaniteAssembliesSupported());
	EXPECT_FALSE(UE::Headless::SetConsoleVariable(TEXT("  "), TEXT("1")));

	// A value set before the variable exists is taken when it registers, and forgotten on reset.
	UE::Headless::ResetConsoleVariables();
	EXPECT_TRUE(UE::Headless::SetConsoleVariable(TEXT("t.HeadlessPlatform.Pending"), TEXT("7")));
	IConsoleVariable* Pending = IConsoleManager::Get().RegisterConsoleVariable(TEXT("t.HeadlessPlatform.Pending"), 3, TEXT("test"));
	EXPECT_EQ(Pending->GetInt(), 7);
	UE::Headless::ResetConsoleVariables();
	EXPECT_EQ(Pending->GetInt(), 3);

	const std::filesystem::path Ini = std::filesystem::temp_directory_path() / "HeadlessPlatformCVars.ini";
	std::ofstream(Ini) << "; comment\n[/Script/Other]\nr.Nanite.Foliage=1\n[ConsoleVariables]\n# comment\nr.Nanite.AllowAssemblies = on\n";
	EXPECT_TRUE(UE::Headless::LoadConsoleVariablesFromIni(UE::Headless::FromUtf8(Ini.string())));
	EXPECT_EQ(Allow->GetInt(), 1);
	EXPECT_EQ(IConsoleManager::Get().FindConsoleVariable(TEXT("r.Nanite.Foliage"))->GetInt(), 0);

	// Renderer project settings set variables too, but [ConsoleVariables] wins wherever both speak,
	// whichever section comes first in the file.
	UE::Headless::ResetConsoleVariables();
	std::ofstream(Ini) << "[ConsoleVariables]\nr.Nanite.AllowAssemblies=0\n[/Script/Engine.RendererSettings]\nr.Nanite.AllowAssemblies=1\nr.Nanite.Foliage=1\n";
	EXPECT_TRUE(UE::Headless::LoadConsoleVariablesFromIni(UE::Headless::FromUtf8(Ini.string())));
	EXPECT_EQ(Allow->GetInt(), 0);
	EXPECT_EQ(IConsoleManager::Get().FindConsoleVariable(TEXT("r.Nanite.Foliage"))->GetInt(), 1);
	std::filesystem::remove(Ini);
	EXPECT_FALSE(UE::Headless::LoadConsoleVariablesFromIni(UE::Headless::FromUtf8(Ini.string())));
	UE::Headless::ResetConsoleVariables();
}

TEST(CoreMisc, EngineVersionAndPaths)
{
	const FEngineVersion& Version = FEngineVersion::Current();
	EXPECT_EQ(Utf8(Version.ToString(EVersionComponent::Patch)), "5.7.1");
	EXPECT_EQ(Utf8(Version.ToString(EVersionComponent::Minor)), "5.7");
	EXPECT_EQ(Utf8(Version.ToString(EVersionComponent::Major)), "5");
	EXPECT_EQ(Version.GetMajor(), 5);
	EXPECT_EQ(Version.GetMinor(), 7);
	EXPECT_EQ(Version.GetPatch(), 1);

	// A folder is under itself; the check is separator-aware and case-sensitive on Linux.
	EXPECT_TRUE(FPaths::IsUnderDirectory(TEXT("/a/b"), TEXT("/a/b")));
	EXPECT_TRUE(FPaths::IsUnderDirectory(TEXT("/a/b/c.txt"), TEXT("/a/b/")));
	EXPECT_FALSE(FPaths::IsUnderDirectory(TEXT("/a/bc"), TEXT("/a/b")));
	EXPECT_FALSE(FPaths::IsUnderDirectory(TEXT("/a/B/c"), TEXT("/a/b")));
	EXPECT_FALSE(FPaths::IsUnderDirectory(TEXT("/a/b/../c"), TEXT("/a/b")));
	EXPECT_TRUE(FPaths::IsUnderDirectory(TEXT("/a/x/../b/./c"), TEXT("/a/b")));
	EXPECT_TRUE(FPaths::IsUnderDirectory(TEXT("\\a\\b\\c"), TEXT("/a/b")));
	EXPECT_FALSE(FPaths::IsUnderDirectory(TEXT("/a"), TEXT("/a/b")));
	EXPECT_TRUE(FPaths::IsUnderDirectory(TEXT("relative/file"), UE::Headless::GetExecutableDir()));
}

TEST(CoreSerialization, MemoryArchivesRoundTripExactly)
{
	FString Text(TEXT("Rock \u00e9 \U0001F600"));
	FName Name(TEXT("Slot_4"));
	FName None;
	TArray<int32> Numbers = { 1, -2, 3 };
	FTransform Transform(FQuat(0.1, 0.2, 0.3, 0.9), FVector(1, 2, 3), FVector(4, 5, 6));
	TArray<uint8> Bytes;
	FMemoryWriter Writer(Bytes);
	Writer << Text << Name << None << Numbers << Transform;

	FString TextIn;
	FName NameIn(TEXT("Other"));
	FName NoneIn(TEXT("Other"));
	TArray<int32> NumbersIn = { 9 };
	FTransform TransformIn;
	FMemoryReader Reader(Bytes);
	Reader << TextIn << NameIn << NoneIn << NumbersIn << TransformIn;
	EXPECT_FALSE(Reader.IsError());
	EXPECT_TRUE(Reader.AtEnd());
	EXPECT_TRUE(TextIn.Equals(Text));
	EXPECT_EQ(Utf8(NameIn), "Slot_4");
	EXPECT_TRUE(NoneIn.IsNone());
	EXPECT_TRUE(NumbersIn == Numbers);
	EXPECT_EQ(std::memcmp(&TransformIn, &Transform, sizeof(FTransform)), 0);

	// Running out of bytes is an error and reads zeros; a string without its terminator is refused.
	const TArray<uint8> Short = { 1, 0 };
	FMemoryReader ShortReader(Short);
	int32 Value = 5;
	ShortReader << Value;
	EXPECT_TRUE(ShortReader.IsError());
	EXPECT_EQ(Value, 0);
	TArray<uint8> Unterminated;
	FMemoryWriter UnterminatedWriter(Unterminated);
	int32 Length = 1;
	TCHAR Letter = TEXT('a');
	UnterminatedWriter << Length << Letter;
	FMemoryReader StringReader(Unterminated);
	StringReader << TextIn;
	EXPECT_TRUE(StringReader.IsError());
	EXPECT_TRUE(TextIn.IsEmpty());
}
