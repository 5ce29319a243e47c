// Start-up and shut-down of the module: what it registers with the host, and the sessions it serves.
#include "CorvaneExtensionRegistrar.h"
#include "Headless/CorvaneHost.h"
#include "Headless/StringUtils.h"
#include "Modules/ModuleManager.h"
#include "TestProject.h"

#include <gtest/gtest.h>

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
	EXPECT_EQ(ToUtf8(Docs[0].Description),
		"Capability probe for the Nanite Assembly builder. Reports whether the NaniteAssemblyEditorUtils plugin (UE 5.7+) is compiled in and enabled, "
		"the engine version, and assemblies_supported (r.Nanite.AllowAssemblies or r.Nanite.Foliage). Scripts branch on .available before calling "
		"nanite_assembly_build.");
	EXPECT_EQ(ToUtf8(Docs[0].Returns), "table {ok, available, plugin, plugin_enabled, engine_version, min_version, assemblies_supported, reason}");

	EXPECT_EQ(ToUtf8(Docs[1].Signature),
		"nanite_assembly_build({ parts = { { mesh, transforms = { {location,rotation,scale}, ... }, material_merge?, material_overrides? }, ... }, output, "
		"overwrite?, save?, wait_for_compile? })");
	EXPECT_EQ(ToUtf8(Docs[1].Description),
		"Build a Nanite Assembly static mesh from instanced part meshes. Each part: mesh (static mesh path, must not itself be an assembly), transforms "
		"(non-empty list of {location={x,y,z}, rotation={pitch,yaw,roll} or Euler {x=roll,y=pitch,z=yaw} (not mixed), scale={x,y,z}|number}; {} is "
		"identity), material_merge (identical_materials|slot_names|material_indices, default identical_materials), material_overrides (list of material "
		"paths indexed by the part's material slot). output is the package path of the mesh to create; overwrite=true edits an existing static mesh into "
		"an assembly; save=true writes the package after the build transaction has closed (the save becomes a Lua checkpoint: earlier work stays "
		"committed, later errors roll back only later edits); wait_for_compile (default true) blocks until the async static mesh build finishes. "
		"Validates everything first, then runs Begin/AddAssemblyParts/Finish inside one transaction and reads the assembly data back from the asset. When "
		"assemblies_supported is false (r.Nanite.AllowAssemblies=0) the asset stores the parts but valid_nanite_data stays false and the result carries "
		"a warning.");
	EXPECT_EQ(ToUtf8(Docs[1].Returns),
		"table {ok, asset, object_path, created, overwritten, nanite_enabled, is_assembly, part_count, node_count, parts, material_slot_count, "
		"assemblies_supported, plugin_enabled, compiled, valid_nanite_data, render_data_available, saved, warning?} or {ok=false, error}");

	EXPECT_EQ(ToUtf8(Docs[2].Signature), "nanite_assembly_info(mesh_path)");
	EXPECT_EQ(ToUtf8(Docs[2].Description),
		"Read-only readback of a static mesh's Nanite Assembly data (FMeshNaniteSettings::NaniteAssemblyData): part list with node counts and material "
		"remaps, node transforms (capped at 256), Nanite enabled/assembly flags, and built-resource availability. Works on UE 5.6+ even where the "
		"builder plugin is absent.");
	EXPECT_EQ(ToUtf8(Docs[2].Returns),
		"table {ok, asset, object_path, nanite_enabled, is_assembly, part_count, node_count, parts, nodes, nodes_truncated, material_slot_count, "
		"assemblies_supported, compiling, valid_nanite_data, render_data_available} or {ok=false, error}");
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
