#pragma once

#include "Logging/LogVerbosity.h"
#include "UObject/NameTypes.h"

struct FLogCategoryBase
{
	CORE_API FLogCategoryBase(const TCHAR* CategoryName, ELogVerbosity::Type DefaultVerbosity);

	[[nodiscard]] const FName& GetCategoryName() const { return CategoryName; }
	[[nodiscard]] ELogVerbosity::Type GetVerbosity() const { return Verbosity; }
	[[nodiscard]] bool IsSuppressed(ELogVerbosity::Type VerbosityLevel) const { return VerbosityLevel > Verbosity; }
	void SetVerbosity(ELogVerbosity::Type NewVerbosity) { Verbosity = NewVerbosity; }

private:
	FName CategoryName;
	ELogVerbosity::Type Verbosity;
};

template <ELogVerbosity::Type InDefaultVerbosity, ELogVerbosity::Type InCompileTimeVerbosity>
struct FLogCategory : public FLogCategoryBase
{
	static constexpr ELogVerbosity::Type CompileTimeVerbosity = InCompileTimeVerbosity;

	explicit FLogCategory(const TCHAR* InCategoryName)
		: FLogCategoryBase(InCategoryName, InDefaultVerbosity)
	{
	}
};
