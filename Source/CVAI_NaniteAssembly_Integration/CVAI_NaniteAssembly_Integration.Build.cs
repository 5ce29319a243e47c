using UnrealBuildTool;

public class CVAI_NaniteAssembly_Integration : ModuleRules
{
	public CVAI_NaniteAssembly_Integration(ReadOnlyTargetRules Target) : base(Target)
	{
		PCHUsage = ModuleRules.PCHUsageMode.UseExplicitOrSharedPCHs;
		CppStandard = CppStandardVersion.Cpp20;

		// sol2 reports escaping C++ exceptions as Lua errors, and the request reader hands a script's own
		// Lua errors back that way.
		bEnableExceptions = true;

		PrivateDependencyModuleNames.AddRange(new string[]
		{
			"Core",                        // strings, containers, maths, modules, automation tests
			"CoreUObject",                 // objects, packages, package names, soft paths
			"Engine",                      // UStaticMesh, Nanite assembly data, materials, mesh compiling
			"RenderCore",                  // NaniteAssembliesSupported
			"Projects",                    // IPluginManager
			"UnrealEd",                    // GEditor, FScopedTransaction, UEditorLoadingAndSavingUtils
			"AssetRegistry",               // IAssetRegistry
			"NaniteAssemblyEditorUtils",   // UNaniteAssemblyStaticMeshBuilder
			"CorvaneAI",                   // the host: registrar, session data, Lua and sol2
		});
	}
}
