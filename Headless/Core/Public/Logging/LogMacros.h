// UE_LOG and the log category declarations.
#pragma once

#include "Containers/UnrealString.h"
#include "Logging/LogCategory.h"
#include "Logging/LogVerbosity.h"

struct FMsg
{
	template <typename FmtType, typename... Types>
	static void Logf(const ANSICHAR* File, int32 Line, const FName& Category, ELogVerbosity::Type Verbosity, const FmtType& Fmt, Types... Args)
	{
		LogfImpl(File, Line, Category, Verbosity, (const TCHAR*)Fmt, Args...);
	}

private:
	static CORE_API void VARARGS LogfImpl(const ANSICHAR* File, int32 Line, const FName& Category, ELogVerbosity::Type Verbosity, const TCHAR* Fmt, ...);
};

#define DECLARE_LOG_CATEGORY_EXTERN(CategoryName, DefaultVerbosity, CompileTimeVerbosity) \
	extern struct FLogCategory##CategoryName : public FLogCategory<ELogVerbosity::DefaultVerbosity, ELogVerbosity::CompileTimeVerbosity> \
	{ \
		FLogCategory##CategoryName() : FLogCategory(TEXT(#CategoryName)) {} \
	} CategoryName;

#define DEFINE_LOG_CATEGORY(CategoryName) FLogCategory##CategoryName CategoryName;

#define DEFINE_LOG_CATEGORY_STATIC(CategoryName, DefaultVerbosity, CompileTimeVerbosity) \
	static struct FLogCategory##CategoryName : public FLogCategory<ELogVerbosity::DefaultVerbosity, ELogVerbosity::CompileTimeVerbosity> \
	{ \
		FLogCategory##CategoryName() : FLogCategory(TEXT(#CategoryName)) {} \
	} CategoryName;

#define UE_LOG(CategoryName, Verbosity, Format, ...) \
	do \
	{ \
		UE_CHECK_FORMAT_STRING(Format, ##__VA_ARGS__); \
		if (!CategoryName.IsSuppressed(ELogVerbosity::Verbosity)) \
		{ \
			FMsg::Logf(__FILE__, __LINE__, CategoryName.GetCategoryName(), ELogVerbosity::Verbosity, Format, ##__VA_ARGS__); \
		} \
	} while (0)

DECLARE_LOG_CATEGORY_EXTERN(LogTemp, Log, All);
DECLARE_LOG_CATEGORY_EXTERN(LogCore, Log, All);
