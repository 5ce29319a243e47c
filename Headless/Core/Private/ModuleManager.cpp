#include "Modules/ModuleManager.h"

#include "Headless/Environment.h"
#include "Headless/StringUtils.h"
#include "Logging/LogMacros.h"

#include <dlfcn.h>

DEFINE_LOG_CATEGORY_STATIC(LogModuleManager, Log, All);

namespace
{
	FModuleInitializerEntry*& FirstEntry()
	{
		static FModuleInitializerEntry* First = nullptr;
		return First;
	}

	bool NamesMatch(const TCHAR* A, const TCHAR* B)
	{
		return A && B && FCString::Strcmp(A, B) == 0;
	}
}

FModuleInitializerEntry::FModuleInitializerEntry(const TCHAR* InName, FInitializeModuleFunctionPtr InFunction, const TCHAR* InName2)
	: Name(InName)
	, Name2(InName2)
	, Function(InFunction)
{
	Next = FirstEntry();
	if (Next)
	{
		Next->Prev = this;
	}
	FirstEntry() = this;
}

FModuleInitializerEntry::~FModuleInitializerEntry()
{
	if (Prev)
	{
		Prev->Next = Next;
	}
	else
	{
		FirstEntry() = Next;
	}
	if (Next)
	{
		Next->Prev = Prev;
	}
}

FInitializeModuleFunctionPtr FModuleInitializerEntry::FindModule(const TCHAR* InName)
{
	for (FModuleInitializerEntry* Entry = FirstEntry(); Entry; Entry = Entry->Next)
	{
		if (NamesMatch(Entry->Name, InName) || NamesMatch(Entry->Name2, InName))
		{
			return Entry->Function;
		}
	}
	return nullptr;
}

FModuleManager& FModuleManager::Get()
{
	static FModuleManager Manager;
	return Manager;
}

IModuleInterface* FModuleManager::LoadModule(const FName InModuleName, ELoadModuleFlags)
{
	if (IModuleInterface* Loaded = GetModule(InModuleName))
	{
		return Loaded;
	}

	const FString ModuleName = InModuleName.ToString();
	void* LibraryHandle = nullptr;
	FInitializeModuleFunctionPtr Initialize = FModuleInitializerEntry::FindModule(*ModuleName);
	if (!Initialize)
	{
		// Not linked into this program: open its library, which must carry the engine module marker and
		// register an initialiser under the module's name while it loads.
		const FString LibraryPath = UE::Headless::GetModuleDir() + TEXT("lib") + ModuleName + TEXT(".so");
		LibraryHandle = dlopen(UE::Headless::ToUtf8(LibraryPath).c_str(), RTLD_NOW | RTLD_LOCAL);
		if (!LibraryHandle)
		{
			UE_LOG(LogModuleManager, Warning, TEXT("ModuleManager: Unable to load module '%s' because the file '%s' was not found or could not be opened: %hs"),
				*ModuleName, *LibraryPath, dlerror());
			return nullptr;
		}
		if (!dlsym(LibraryHandle, "ThisIsAnUnrealEngineModule"))
		{
			UE_LOG(LogModuleManager, Warning, TEXT("ModuleManager: '%s' is not an engine module library (no module marker)."), *LibraryPath);
			dlclose(LibraryHandle);
			return nullptr;
		}
		Initialize = FModuleInitializerEntry::FindModule(*ModuleName);
		if (!Initialize)
		{
			UE_LOG(LogModuleManager, Warning, TEXT("ModuleManager: Unable to find the initialiser of module '%s' in '%s'."), *ModuleName, *LibraryPath);
			dlclose(LibraryHandle);
			return nullptr;
		}
	}

	IModuleInterface* Module = Initialize();
	if (!Module)
	{
		UE_LOG(LogModuleManager, Warning, TEXT("ModuleManager: Initialising module '%s' failed."), *ModuleName);
		if (LibraryHandle)
		{
			dlclose(LibraryHandle);
		}
		return nullptr;
	}
	Modules.Add(FModuleInfo{ InModuleName, Module, LibraryHandle });
	Module->StartupModule();
	return Module;
}

bool FModuleManager::IsModuleLoaded(const FName InModuleName) const
{
	return Modules.ContainsByPredicate([&InModuleName](const FModuleInfo& Info) { return Info.Name == InModuleName; });
}

IModuleInterface* FModuleManager::GetModule(const FName InModuleName)
{
	FModuleInfo* Info = Modules.FindByPredicate([&InModuleName](const FModuleInfo& Entry) { return Entry.Name == InModuleName; });
	return Info ? Info->Module : nullptr;
}

bool FModuleManager::UnloadModule(const FName InModuleName, bool bIsShutdown)
{
	const int32 Index = Modules.IndexOfByPredicate([&InModuleName](const FModuleInfo& Info) { return Info.Name == InModuleName; });
	if (Index == INDEX_NONE)
	{
		return false;
	}
	const FModuleInfo Info = Modules[Index];
	Modules.RemoveAt(Index);
	if (!bIsShutdown)
	{
		Info.Module->PreUnloadCallback();
	}
	Info.Module->ShutdownModule();
	delete Info.Module;
	if (Info.LibraryHandle)
	{
		dlclose(Info.LibraryHandle);
	}
	return true;
}

void FModuleManager::UnloadModulesAtShutdown()
{
	while (Modules.Num() > 0)
	{
		UnloadModule(Modules.Last().Name, true);
	}
}
