#include "HAL/IConsoleManager.h"
#include "Headless/Environment.h"
#include "Headless/StringUtils.h"

#include <cstdlib>
#include <map>
#include <memory>
#include <string>

namespace
{
	// Integers read "true", "on" and "yes" as 1 and "false", "off" and "no" as 0, like the engine's parser.
	int32 ParseInt(const FString& Text)
	{
		const FString Trimmed = Text.TrimStartAndEnd();
		if (Trimmed == TEXT("true") || Trimmed == TEXT("on") || Trimmed == TEXT("yes"))
		{
			return 1;
		}
		if (Trimmed == TEXT("false") || Trimmed == TEXT("off") || Trimmed == TEXT("no"))
		{
			return 0;
		}
		return (int32)std::strtol(UE::Headless::ToUtf8(Trimmed).c_str(), nullptr, 10);
	}

	class FConsoleVariable final : public IConsoleVariable
	{
	public:
		FConsoleVariable(const FString& InValue, const TCHAR* InHelp, uint32 InFlags)
			: Value(InValue)
			, DefaultValue(InValue)
			, Help(InHelp ? InHelp : TEXT(""))
			, Flags(InFlags)
		{
		}

		// Read-only variables only take values from project settings, as in the engine.
		void Set(const TCHAR* InValue, EConsoleVariableFlags SetBy) override
		{
			if ((Flags & ECVF_ReadOnly) && SetBy != ECVF_SetByProjectSetting)
			{
				return;
			}
			Value = InValue ? InValue : TEXT("");
		}

		int32 GetInt() const override { return ParseInt(Value); }
		float GetFloat() const override { return std::strtof(UE::Headless::ToUtf8(Value).c_str(), nullptr); }
		FString GetString() const override { return Value; }
		EConsoleVariableFlags GetFlags() const override { return (EConsoleVariableFlags)Flags; }
		void ResetToDefault() { Value = DefaultValue; }
		const TCHAR* GetHelp() const override { return *Help; }

	private:
		FString Value;
		FString DefaultValue;
		FString Help;
		uint32 Flags;
	};

	class FConsoleManager final : public IConsoleManager
	{
	public:
		IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, int32 DefaultValue, const TCHAR* Help, uint32 Flags) override
		{
			return Register(Name, FString::Printf(TEXT("%d"), DefaultValue), Help, Flags);
		}

		IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, float DefaultValue, const TCHAR* Help, uint32 Flags) override
		{
			return Register(Name, FString::Printf(TEXT("%g"), (double)DefaultValue), Help, Flags);
		}

		IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, const FString& DefaultValue, const TCHAR* Help, uint32 Flags) override
		{
			return Register(Name, DefaultValue, Help, Flags);
		}

		IConsoleVariable* FindConsoleVariable(const TCHAR* Name, bool) const override
		{
			const auto Found = Variables.find(Key(Name));
			return Found == Variables.end() ? nullptr : Found->second.get();
		}

		void SetFromProjectSettings(const FString& Name, const FString& Value)
		{
			if (IConsoleVariable* Variable = FindConsoleVariable(*Name, false))
			{
				Variable->Set(*Value, ECVF_SetByProjectSetting);
			}
			else
			{
				Pending[Key(*Name)] = Value;
			}
		}

		void ResetAll()
		{
			for (auto& Entry : Variables)
			{
				Entry.second->ResetToDefault();
			}
			Pending.clear();
		}

	private:
		static std::string Key(const TCHAR* Name)
		{
			return UE::Headless::ToUtf8(FString(Name).ToLower());
		}

		IConsoleVariable* Register(const TCHAR* Name, const FString& DefaultValue, const TCHAR* Help, uint32 Flags)
		{
			const std::string VariableKey = Key(Name);
			auto& Slot = Variables[VariableKey];
			if (!Slot)
			{
				Slot = std::make_unique<FConsoleVariable>(DefaultValue, Help, Flags);
				const auto PendingValue = Pending.find(VariableKey);
				if (PendingValue != Pending.end())
				{
					Slot->Set(*PendingValue->second, ECVF_SetByProjectSetting);
					Pending.erase(PendingValue);
				}
			}
			return Slot.get();
		}

		std::map<std::string, std::unique_ptr<FConsoleVariable>> Variables;
		std::map<std::string, FString> Pending;
	};

	FConsoleManager& GetManager()
	{
		static FConsoleManager Manager;
		return Manager;
	}
}

IConsoleManager& IConsoleManager::Get()
{
	return GetManager();
}

namespace UE::Headless
{
	bool SetConsoleVariable(const FString& Name, const FString& Value)
	{
		if (Name.TrimStartAndEnd().IsEmpty())
		{
			return false;
		}
		GetManager().SetFromProjectSettings(Name.TrimStartAndEnd(), Value);
		return true;
	}

	void ResetConsoleVariables()
	{
		GetManager().ResetAll();
	}
}
