// Start-up and shut-down of the module: what it registers with the host, and the sessions it serves.
#include "CorvaneExtensionRegistrar.h"
#include "Headless/CorvaneHost.h"
#include "Headless/StringUtils.h"
#include "Modules/ModuleManager.h"
#include "TestProject.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace
{
	using UE::Headless::FCorvaneRegistrarAccess;
	using UE::Headless::ToUtf8;

	const FName ModuleName(TEXT("CVAI_NaniteAssembly_Integration"));

	int32 CountExtensions(const TCHAR* Id)
	{
		int32 Count = 0;
		for (const FCorvaneExtensionDescriptor& Descriptor : FCorvaneRegistrarAccess::GetExtensions())
		{
			Count += Descriptor.Id.Equals(Id) ? 1 : 0;
		}
		return Count;
	}

	TArray<UE::Headless::FRegisteredBinding> BindingsOf(const TCHAR* Id)
	{
		TArray<UE::Headless::FRegisteredBinding> Result;
		for (const UE::Headless::FRegisteredBinding& Binding : FCorvaneRegistrarAccess::GetBindings())
		{
			if (Binding.ExtensionId.Equals(Id))
			{
				Result.Add(Binding);
			}
		}
		return Result;
	}

	// The keys of the table that a Lua call returns.
	std::set<std::string> KeysOf(FTestSession& Session, const std::string& Call)
	{
		const std::string Listed = Session.Eval("(function() local keys = {} for key in pairs(" + Call
			+ ") do keys[#keys + 1] = key end table.sort(keys) return table.concat(keys, ' ') end)()");
		std::set<std::string> Keys;
		size_t Start = 0;
		while (Start < Listed.size())
		{
			const size_t End = std::min(Listed.find(' ', Start), Listed.size());
			Keys.insert(Listed.substr(Start, End - Start));
			Start = End + 1;
		}
		return Keys;
	}

	// The keys a documented return lists in its first braces ("table {ok, asset, warning?} or ..."); those
	// marked '?' are optional.
	std::set<std::string> DocumentedKeys(const std::string& Returns, std::set<std::string>& OutOptional)
	{
		std::set<std::string> Keys;
		const size_t Open = Returns.find('{');
		const size_t Close = Returns.find('}', Open);
		std::string Current;
		for (size_t Index = Open + 1; Index <= Close; ++Index)
		{
			const char Char = Returns[Index];
			if (Char == ',' || Char == '}')
			{
				if (!Current.empty() && Current.back() == '?')
				{
					Current.pop_back();
					OutOptional.insert(Current);
				}
				Keys.insert(Current);
				Current.clear();
			}
			else if (Char != ' ')
			{
				Current += Char;
			}
		}
		return Keys;
	}

	class ModuleLifecycleTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			FModuleManager::Get().UnloadModule(ModuleName);
			FCorvaneExtensionRegistrar::Get().UnregisterAllForExtension(TEXT("corvane.naniteassembly"));
		}

		void TearDown() override
		{
			FModuleManager::Get().UnloadModule(ModuleName);
		}
	};
}

TEST_F(ModuleLifecycleTest, StartupRegistersOneExtensionWithTheDescriptorTexts)
{
	ASSERT_NE(FModuleManager::Get().LoadModule(ModuleName), nullptr);
	ASSERT_EQ(CountExtensions(TEXT("corvane.naniteassembly")), 1);

	const FCorvaneExtensionDescriptor* Descriptor = FCorvaneRegistrarAccess::GetExtensions().FindByPredicate(
		[](const FCorvaneExtensionDescriptor& Entry) { return Entry.Id.Equals(TEXT("corvane.naniteassembly")); });
	ASSERT_NE(Descriptor, nullptr);
	EXPECT_EQ(ToUtf8(Descriptor->DisplayName), "Nanite Assembly");
	EXPECT_EQ(ToUtf8(Descriptor->ModuleName), "CVAI_NaniteAssembly_Integration");
	EXPECT_EQ(ToUtf8(Descriptor->Author), "Ostrel Studio");
	EXPECT_EQ(ToUtf8(Descriptor->Version), "0.1.0");
	EXPECT_EQ(ToUtf8(Descriptor->Category), "integration");
	EXPECT_EQ(ToUtf8(Descriptor->Description), "Build Nanite Assembly static meshes from instanced parts.");
	EXPECT_TRUE(Descriptor->bHostFlag);

	// The host fields around the flag stay as the host's constructor set them.
	EXPECT_TRUE(FCorvaneRegistrarAccess::HasDefaultHostFields(*Descriptor));
}

TEST_F(ModuleLifecycleTest, StartupRegistersOneBindingWithTheThreeDocRecords)
{
	ASSERT_NE(FModuleManager::Get().LoadModule(ModuleName), nullptr);
	const TArray<UE::Headless::FRegisteredBinding> Bindings = BindingsOf(TEXT("corvane.naniteassembly"));
	ASSERT_EQ(Bindings.Num(), 1);
	EXPECT_EQ(ToUtf8(Bindings[0].BindingName), "NaniteAssembly");
	EXPECT_TRUE(Bindings[0].Binder.IsBound());

	const TArray<FLuaFunctionDoc>& Docs = Bindings[0].Docs;
	ASSERT_EQ(Docs.Num(), 3);
	EXPECT_EQ(ToUtf8(Docs[0].Signature), "nanite_assembly_support()");
	EXPECT_EQ(ToUtf8(Docs[1].Signature),
		"nanite_assembly_build({ parts = { { mesh, transforms = { {location,rotation,scale}, ... }, material_merge?, material_overrides? }, ... }, output, "
		"overwrite?, save?, wait_for_compile? })");
	EXPECT_EQ(ToUtf8(Docs[2].Signature), "nanite_assembly_info(mesh_path)");
	for (const FLuaFunctionDoc& Doc : Docs)
	{
		EXPECT_FALSE(Doc.Description.IsEmpty()) << ToUtf8(Doc.Signature);
	}
}

// What each record documents a verb to return is what the verb really returns: every documented key is in
// the real table, and every key of the real table is documented or one of the few extras that the
// documentation is known to leave out.
TEST_F(ModuleLifecycleTest, TheDocumentedReturnsAreTheKeysTheVerbsReturn)
{
	ASSERT_NE(FModuleManager::Get().LoadModule(ModuleName), nullptr);
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	FTestSession Session(Project);
	const TArray<FLuaFunctionDoc> Docs = BindingsOf(TEXT("corvane.naniteassembly"))[0].Docs;
	ASSERT_EQ(Docs.Num(), 3);

	struct FVerbCase
	{
		const FLuaFunctionDoc& Doc;
		std::string Call;
		std::set<std::string> UndocumentedExtras;
	};
	const FVerbCase Cases[] = {
		{ Docs[0], "nanite_assembly_support()", { "supported", "compiled_in" } },
		{ Docs[1], "nanite_assembly_build{ output = 'Docs/SM_Keys', parts = { { mesh = '/Engine/BasicShapes/Cube', transforms = { {} } } } }",
			{ "nanite_settings_enabled", "assembly_data_valid", "compiling", "transaction_owned", "registered" } },
		{ Docs[2], "nanite_assembly_info('/Engine/BasicShapes/Cube')", { "nanite_settings_enabled", "assembly_data_valid" } },
	};
	for (const FVerbCase& Case : Cases)
	{
		const std::string Returns = ToUtf8(Case.Doc.Returns);
		const std::set<std::string> Real = KeysOf(Session, Case.Call);
		std::set<std::string> Optional;
		const std::set<std::string> Documented = DocumentedKeys(Returns, Optional);
		for (const std::string& Key : Documented)
		{
			EXPECT_TRUE(Real.count(Key) || Optional.count(Key)) << Case.Call << " documents '" << Key << "', which it does not return";
		}
		for (const std::string& Key : Real)
		{
			EXPECT_TRUE(Documented.count(Key) || Case.UndocumentedExtras.count(Key)) << Case.Call << " returns '" << Key << "', which is not documented";
		}
		for (const std::string& Key : Case.UndocumentedExtras)
		{
			EXPECT_TRUE(Real.count(Key) && !Documented.count(Key)) << Case.Call << ": the extra '" << Key << "'";
		}
		// A failing call's table is the documented {ok=false, error} (the probe never fails).
		if (Returns.find(" or {ok=false, error}") != std::string::npos)
		{
			const std::string Failing = Case.Call.find("info") != std::string::npos ? "nanite_assembly_info('/Game/Docs/Missing')" : "nanite_assembly_build{}";
			EXPECT_EQ(KeysOf(Session, Failing), (std::set<std::string>{ "ok", "error" })) << Failing;
		}
	}
}

TEST_F(ModuleLifecycleTest, ShutdownRemovesEverythingWithOneCallAndStartupRegistersAgain)
{
	ASSERT_NE(FModuleManager::Get().LoadModule(ModuleName), nullptr);
	ASSERT_EQ(BindingsOf(TEXT("corvane.naniteassembly")).Num(), 1);

	ASSERT_TRUE(FModuleManager::Get().UnloadModule(ModuleName));
	EXPECT_EQ(CountExtensions(TEXT("corvane.naniteassembly")), 0);
	EXPECT_EQ(BindingsOf(TEXT("corvane.naniteassembly")).Num(), 0);

	// The module's own initialiser gives a fresh module each time; shutting down with nothing registered
	// is harmless.
	FInitializeModuleFunctionPtr Initialize = FModuleInitializerEntry::FindModule(TEXT("CVAI_NaniteAssembly_Integration"));
	ASSERT_NE(Initialize, nullptr);
	IModuleInterface* Bare = Initialize();
	ASSERT_NE(Bare, nullptr);
	EXPECT_FALSE(Bare->IsGameModule());
	EXPECT_TRUE(Bare->SupportsDynamicReloading());
	Bare->ShutdownModule();
	EXPECT_EQ(CountExtensions(TEXT("corvane.naniteassembly")), 0);
	delete Bare;

	ASSERT_NE(FModuleManager::Get().LoadModule(ModuleName), nullptr);
	EXPECT_EQ(CountExtensions(TEXT("corvane.naniteassembly")), 1);
	EXPECT_EQ(BindingsOf(TEXT("corvane.naniteassembly")).Num(), 1);
	EXPECT_EQ(FCorvaneExtensionRegistrar::Get().UnregisterAllForExtension(TEXT("corvane.naniteassembly")), 2);
}

TEST(ModuleSessions, EachSessionHasItsOwnClosuresAndLog)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	FTestSession First(Project);
	FTestSession Second(Project);

	EXPECT_EQ(First.Run("assert(type(nanite_assembly_support) == 'function')"), "");
	EXPECT_EQ(First.Run("nanite_assembly_support()"), "");
	ASSERT_EQ(First.GetLogLines().Num(), 1);
	EXPECT_EQ(ToUtf8(First.GetLogLines()[0]), "[OK] nanite_assembly_support -> available=true, plugin_enabled=true, assemblies_supported=true");
	EXPECT_EQ(Second.GetLogLines().Num(), 0);

	// A script may replace a global; the other session keeps its own.
	EXPECT_EQ(First.Run("nanite_assembly_info = nil"), "");
	EXPECT_EQ(Second.Eval("nanite_assembly_info('/Engine/BasicShapes/Cube').ok"), "true");
	ASSERT_EQ(Second.GetLogLines().Num(), 1);
	EXPECT_EQ(ToUtf8(Second.GetLogLines()[0]), "[OK] nanite_assembly_info(\"/Engine/BasicShapes/Cube\") -> is_assembly=false, parts=0, nodes=0");
	EXPECT_EQ(First.GetLogLines().Num(), 1);
}
