// FText: display text. Localised texts keep their namespace and key; this build shows the source text.
#pragma once

#include "Containers/UnrealString.h"
#include "UObject/NameTypes.h"

namespace UE::Headless
{
	struct FTextAccess;
}

class FText
{
public:
	CORE_API FText();

	[[nodiscard]] static CORE_API FText FromString(const FString& String);
	[[nodiscard]] static CORE_API FText FromString(FString&& String);
	[[nodiscard]] static CORE_API FText FromName(const FName& Name);
	[[nodiscard]] static CORE_API FText AsCultureInvariant(const FString& String);
	[[nodiscard]] static CORE_API FText AsLocalizable_Advanced(const TCHAR* Namespace, const TCHAR* Key, const TCHAR* String);
	[[nodiscard]] static CORE_API const FText& GetEmpty();

	[[nodiscard]] const FString& ToString() const { return DisplayString; }
	[[nodiscard]] bool IsEmpty() const { return DisplayString.IsEmpty(); }
	[[nodiscard]] bool EqualTo(const FText& Other) const { return DisplayString.Equals(Other.DisplayString); }
	[[nodiscard]] bool IdenticalTo(const FText& Other) const
	{
		return EqualTo(Other) && Namespace.Equals(Other.Namespace) && Key.Equals(Other.Key);
	}
private:
	friend struct UE::Headless::FTextAccess;

	FString DisplayString;
	FString Namespace;
	FString Key;
};
