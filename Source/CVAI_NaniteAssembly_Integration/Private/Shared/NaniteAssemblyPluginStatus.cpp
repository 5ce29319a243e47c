#include "Shared/NaniteAssemblyPluginStatus.h"

#include "Interfaces/IPluginManager.h"
#include "Misc/EngineVersion.h"
#include "RenderUtils.h"

namespace CVAI::NaniteAssembly
{
	FNaniteAssemblyPluginStatus GetNaniteAssemblyPluginStatus()
	{
		FNaniteAssemblyPluginStatus Status;
		Status.EngineVersion = FEngineVersion::Current().ToString(EVersionComponent::Patch);
		Status.bPluginEnabled = IPluginManager::Get().FindEnabledPlugin(FStringView(NaniteAssemblyPluginName)).IsValid();
		Status.bAssembliesSupported = NaniteAssembliesSupported();

		// Availability does not depend on renderer support: without it the asset still stores the assembly.
		if (Status.bPluginEnabled)
		{
			Status.bAvailable = true;
			Status.Reason = Status.bAssembliesSupported
				? FString(TEXT("ok"))
				: FString(TEXT("ok (r.Nanite.AllowAssemblies=0: the asset stores the assembly but the built Nanite resource ignores it until the cvar is "
							   "set in DefaultEngine.ini [ConsoleVariables])"));
		}
		else
		{
			Status.Reason = FString::Printf(
				TEXT("plugin_disabled: the %s plugin is compiled in but not enabled for this project; add {\"Name\": \"%s\", \"Enabled\": true} to "
					 "the .uproject Plugins list"),
				NaniteAssemblyPluginName, NaniteAssemblyPluginName);
		}
		return Status;
	}
}
