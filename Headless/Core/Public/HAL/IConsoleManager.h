// Console variables.
#pragma once

#include "Containers/UnrealString.h"
#include "HAL/Platform.h"

enum EConsoleVariableFlags
{
	ECVF_Default = 0x0,
	ECVF_Cheat = 0x1,
	ECVF_ReadOnly = 0x4,
	ECVF_RenderThreadSafe = 0x20,
	ECVF_SetByConstructor = 0x00000000,
	ECVF_SetByProjectSetting = 0x04000000,
	ECVF_SetByCode = 0x0E000000,
	ECVF_SetByConsole = 0x10000000,
};

class IConsoleVariable
{
public:
	virtual ~IConsoleVariable() = default;
	virtual void Set(const TCHAR* InValue, EConsoleVariableFlags SetBy = ECVF_SetByCode) = 0;
	[[nodiscard]] virtual int32 GetInt() const = 0;
	[[nodiscard]] virtual float GetFloat() const = 0;
	[[nodiscard]] virtual bool GetBool() const { return GetInt() != 0; }
	[[nodiscard]] virtual FString GetString() const = 0;
	[[nodiscard]] virtual EConsoleVariableFlags GetFlags() const = 0;
	[[nodiscard]] virtual const TCHAR* GetHelp() const = 0;
};

class IConsoleManager
{
public:
	virtual ~IConsoleManager() = default;
	static CORE_API IConsoleManager& Get();

	virtual IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, int32 DefaultValue, const TCHAR* Help, uint32 Flags = ECVF_Default) = 0;
	virtual IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, float DefaultValue, const TCHAR* Help, uint32 Flags = ECVF_Default) = 0;
	virtual IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, const FString& DefaultValue, const TCHAR* Help, uint32 Flags = ECVF_Default) = 0;
	[[nodiscard]] virtual IConsoleVariable* FindConsoleVariable(const TCHAR* Name, bool bTrackFrequentCalls = true) const = 0;
};

// A console variable registered for the lifetime of the library that defines it.
template <typename T>
class TAutoConsoleVariable
{
public:
	TAutoConsoleVariable(const TCHAR* Name, const T& DefaultValue, const TCHAR* Help, uint32 Flags = ECVF_Default)
		: Variable(IConsoleManager::Get().RegisterConsoleVariable(Name, DefaultValue, Help, Flags))
	{
	}

	[[nodiscard]] IConsoleVariable* AsVariable() const { return Variable; }
	[[nodiscard]] T GetValueOnAnyThread(bool bForceGameThread = false) const
	{
		if constexpr (std::is_same_v<T, FString>)
		{
			return Variable->GetString();
		}
		else if constexpr (std::is_floating_point_v<T>)
		{
			return (T)Variable->GetFloat();
		}
		else
		{
			return (T)Variable->GetInt();
		}
	}
	[[nodiscard]] T GetValueOnGameThread() const { return GetValueOnAnyThread(); }

private:
	IConsoleVariable* Variable;
};
