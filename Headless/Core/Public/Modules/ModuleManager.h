// The module manager and the registration of a module library with it.
#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Modules/ModuleInterface.h"
#include "UObject/NameTypes.h"

#include <new>

typedef IModuleInterface* (*FInitializeModuleFunctionPtr)(void);

// One static entry per module library: it puts the module's name and initialiser into a process-wide list
// when the library loads, and takes them out when it unloads.
class FModuleInitializerEntry
{
public:
	CORE_API FModuleInitializerEntry(const TCHAR* InName, FInitializeModuleFunctionPtr InFunction, const TCHAR* InName2 = nullptr);
	CORE_API ~FModuleInitializerEntry();
	FModuleInitializerEntry(const FModuleInitializerEntry&) = delete;
	FModuleInitializerEntry& operator=(const FModuleInitializerEntry&) = delete;

	static CORE_API FInitializeModuleFunctionPtr FindModule(const TCHAR* Name);

private:
	FModuleInitializerEntry* Prev = nullptr;
	FModuleInitializerEntry* Next = nullptr;
	const TCHAR* Name = nullptr;
	const TCHAR* Name2 = nullptr;
	FInitializeModuleFunctionPtr Function = nullptr;
};

class FDefaultModuleImpl : public IModuleInterface
{
};

class FDefaultGameModuleImpl : public FDefaultModuleImpl
{
public:
	bool IsGameModule() const override { return true; }
};

enum class ELoadModuleFlags
{
	None = 0,
	LogFailures = 1 << 0,
};

class FModuleManager
{
public:
	static CORE_API FModuleManager& Get();

	// Loads the module's library when its initialiser is not registered yet, then creates and starts the module.
	CORE_API IModuleInterface* LoadModule(const FName InModuleName, ELoadModuleFlags InLoadModuleFlags = ELoadModuleFlags::None);
	CORE_API bool IsModuleLoaded(const FName InModuleName) const;
	CORE_API IModuleInterface* GetModule(const FName InModuleName);
	CORE_API bool UnloadModule(const FName InModuleName, bool bIsShutdown = false);
	CORE_API void UnloadModulesAtShutdown();

	template <typename TModuleInterface>
	static TModuleInterface* LoadModulePtr(const FName InModuleName)
	{
		return static_cast<TModuleInterface*>(Get().LoadModule(InModuleName));
	}

	template <typename TModuleInterface>
	static TModuleInterface& LoadModuleChecked(const FName InModuleName)
	{
		IModuleInterface* Module = Get().LoadModule(InModuleName);
		check(Module);
		return *static_cast<TModuleInterface*>(Module);
	}

	template <typename TModuleInterface>
	static TModuleInterface& GetModuleChecked(const FName InModuleName)
	{
		IModuleInterface* Module = Get().GetModule(InModuleName);
		check(Module);
		return *static_cast<TModuleInterface*>(Module);
	}

private:
	struct FModuleInfo
	{
		FName Name;
		IModuleInterface* Module = nullptr;
		void* LibraryHandle = nullptr;
	};

	TArray<FModuleInfo> Modules;
};

#define PER_MODULE_BOILERPLATE_ANYLINK(ModuleImplClass, ModuleName) \
	extern "C" DLLEXPORT void ThisIsAnUnrealEngineModule() {}

#define IMPLEMENT_MODULE(ModuleImplClass, ModuleName) \
	static IModuleInterface* Initialize##ModuleName##Module() \
	{ \
		return new (std::nothrow) ModuleImplClass(); \
	} \
	static FModuleInitializerEntry ModuleName##InitializerEntry(TEXT(#ModuleName), Initialize##ModuleName##Module, TEXT(#ModuleName)); \
	extern "C" DLLEXPORT void IMPLEMENT_MODULE_##ModuleName() {} \
	PER_MODULE_BOILERPLATE_ANYLINK(ModuleImplClass, ModuleName)

#define IMPLEMENT_GAME_MODULE(ModuleImplClass, ModuleName) IMPLEMENT_MODULE(ModuleImplClass, ModuleName)
