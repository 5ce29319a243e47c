// The plugin manager: which plugins exist and which are enabled for the project.
#pragma once

#include "Containers/Array.h"
#include "Containers/StringView.h"
#include "Containers/UnrealString.h"
#include "Templates/SharedPointer.h"

class IPlugin
{
public:
	virtual ~IPlugin() = default;
	[[nodiscard]] virtual const FString& GetName() const = 0;
	[[nodiscard]] virtual const FString& GetFriendlyName() const = 0;
	[[nodiscard]] virtual FString GetBaseDir() const = 0;
	[[nodiscard]] virtual FString GetContentDir() const = 0;
	[[nodiscard]] virtual FString GetMountedAssetPath() const = 0;
	[[nodiscard]] virtual bool IsEnabled() const = 0;
	[[nodiscard]] virtual bool IsEnabledByDefault(bool bAllowEnginePluginsEnabledByDefault) const = 0;
	[[nodiscard]] virtual bool CanContainContent() const = 0;
};

class IPluginManager
{
public:
	virtual ~IPluginManager() = default;

	static PROJECTS_API IPluginManager& Get();

	// Null when no plugin of that name exists.
	virtual TSharedPtr<IPlugin> FindPlugin(const FStringView Name) = 0;
	virtual TSharedPtr<IPlugin> FindPlugin(const ANSICHAR* Name) = 0;
	// Null when no plugin of that name exists or it is not enabled for the project.
	virtual TSharedPtr<IPlugin> FindEnabledPlugin(const FStringView Name) = 0;
	virtual TSharedPtr<IPlugin> FindEnabledPlugin(const ANSICHAR* Name) = 0;
	virtual TArray<TSharedRef<IPlugin>> GetEnabledPlugins() = 0;
	virtual TArray<TSharedRef<IPlugin>> GetDiscoveredPlugins() = 0;
};
