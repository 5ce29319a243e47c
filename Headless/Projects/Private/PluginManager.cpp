#include "Headless/Plugins.h"
#include "Interfaces/IPluginManager.h"

#include "Headless/StringUtils.h"
#include "Logging/LogMacros.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>

DEFINE_LOG_CATEGORY_STATIC(LogPluginManager, Log, All);

namespace
{
	class FPlugin final : public IPlugin
	{
	public:
		FPlugin(const TCHAR* InName, const TCHAR* InFriendlyName, bool bInEnabledByDefault, bool bInCanContainContent)
			: Name(InName)
			, FriendlyName(InFriendlyName)
			, bEnabledByDefault(bInEnabledByDefault)
			, bCanContainContent(bInCanContainContent)
			, bEnabled(bInEnabledByDefault)
		{
		}

		const FString& GetName() const override { return Name; }
		const FString& GetFriendlyName() const override { return FriendlyName; }
		FString GetBaseDir() const override { return FString(TEXT("Plugins/")) + Name; }
		FString GetContentDir() const override { return GetBaseDir() + TEXT("/Content"); }
		FString GetMountedAssetPath() const override { return FString(TEXT("/")) + Name + TEXT("/"); }
		bool IsEnabled() const override { return bEnabled; }
		bool IsEnabledByDefault(bool) const override { return bEnabledByDefault; }
		bool CanContainContent() const override { return bCanContainContent; }

		void SetEnabled(bool bInEnabled) { bEnabled = bInEnabled; }
		void ResetToDefault() { bEnabled = bEnabledByDefault; }

	private:
		FString Name;
		FString FriendlyName;
		bool bEnabledByDefault;
		bool bCanContainContent;
		bool bEnabled;
	};

	// The plugins this editor knows: the experimental assembly builder (off unless the project enables
	// it), the host and this project's extension.
	class FPluginManager final : public IPluginManager
	{
	public:
		FPluginManager()
		{
			Plugins.Add(MakeShared<FPlugin>(TEXT("NaniteAssemblyEditorUtils"), TEXT("Nanite Assembly Editor Utilities"), false, false));
			Plugins.Add(MakeShared<FPlugin>(TEXT("CorvaneAI"), TEXT("Corvane AI"), true, false));
			Plugins.Add(MakeShared<FPlugin>(TEXT("CVAI_NaniteAssembly"), TEXT("Corvane Nanite Assembly"), true, false));
		}

		TSharedPtr<IPlugin> FindPlugin(const FStringView Name) override { return Find(Name); }
		TSharedPtr<IPlugin> FindPlugin(const ANSICHAR* Name) override { return Find(FString(Name)); }

		TSharedPtr<IPlugin> FindEnabledPlugin(const FStringView Name) override
		{
			TSharedPtr<FPlugin> Plugin = Find(Name);
			return Plugin && Plugin->IsEnabled() ? TSharedPtr<IPlugin>(Plugin) : TSharedPtr<IPlugin>();
		}

		TSharedPtr<IPlugin> FindEnabledPlugin(const ANSICHAR* Name) override { return FindEnabledPlugin(FString(Name)); }

		TArray<TSharedRef<IPlugin>> GetEnabledPlugins() override
		{
			TArray<TSharedRef<IPlugin>> Result;
			for (const TSharedRef<FPlugin>& Plugin : Plugins)
			{
				if (Plugin->IsEnabled())
				{
					Result.Add(Plugin);
				}
			}
			return Result;
		}

		TArray<TSharedRef<IPlugin>> GetDiscoveredPlugins() override
		{
			TArray<TSharedRef<IPlugin>> Result;
			for (const TSharedRef<FPlugin>& Plugin : Plugins)
			{
				Result.Add(Plugin);
			}
			return Result;
		}

		TSharedPtr<FPlugin> Find(FStringView Name)
		{
			for (const TSharedRef<FPlugin>& Plugin : Plugins)
			{
				if (FStringView(*Plugin->GetName(), Plugin->GetName().Len()).Equals(Name, ESearchCase::IgnoreCase))
				{
					return Plugin.ToSharedPtr();
				}
			}
			return TSharedPtr<FPlugin>();
		}

		void ResetToDefaults()
		{
			for (const TSharedRef<FPlugin>& Plugin : Plugins)
			{
				Plugin->ResetToDefault();
			}
		}

	private:
		TArray<TSharedRef<FPlugin>> Plugins;
	};

	FPluginManager& GetManager()
	{
		static FPluginManager Manager;
		return Manager;
	}
}

IPluginManager& IPluginManager::Get()
{
	return GetManager();
}

namespace UE::Headless
{
	bool LoadProjectPlugins(const FString& UProjectPath, FString& OutError)
	{
		GetManager().ResetToDefaults();
		std::ifstream In(ToUtf8(UProjectPath));
		if (!In)
		{
			OutError = FString::Printf(TEXT("cannot read '%s'"), *UProjectPath);
			return false;
		}
		std::stringstream Buffer;
		Buffer << In.rdbuf();
		const nlohmann::json Project = nlohmann::json::parse(Buffer.str(), nullptr, false);
		if (Project.is_discarded() || !Project.is_object())
		{
			OutError = FString::Printf(TEXT("'%s' is not a valid project file (not a JSON object)"), *UProjectPath);
			return false;
		}
		if (!Project.contains("Plugins"))
		{
			return true;
		}
		if (!Project["Plugins"].is_array())
		{
			OutError = FString::Printf(TEXT("'%s': 'Plugins' is not a list"), *UProjectPath);
			return false;
		}
		for (const nlohmann::json& Entry : Project["Plugins"])
		{
			if (!Entry.is_object() || !Entry.contains("Name") || !Entry["Name"].is_string())
			{
				UE_LOG(LogPluginManager, Warning, TEXT("Ignoring a plugin reference without a name in '%s'."), *UProjectPath);
				continue;
			}
			const FString Name = FromUtf8(Entry["Name"].get<std::string>());
			const bool bEnabled = Entry.contains("Enabled") && Entry["Enabled"].is_boolean() && Entry["Enabled"].get<bool>();
			if (TSharedPtr<FPlugin> Plugin = GetManager().Find(FStringView(*Name, Name.Len())))
			{
				Plugin->SetEnabled(bEnabled);
			}
			else if (bEnabled)
			{
				UE_LOG(LogPluginManager, Warning, TEXT("Unable to find plugin '%s' (referenced by '%s')."), *Name, *UProjectPath);
			}
		}
		return true;
	}

	void SetPluginEnabled(const FString& Name, bool bEnabled)
	{
		if (TSharedPtr<FPlugin> Plugin = GetManager().Find(FStringView(*Name, Name.Len())))
		{
			Plugin->SetEnabled(bEnabled);
		}
	}
}
