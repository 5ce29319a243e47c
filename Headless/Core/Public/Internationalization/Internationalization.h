// The localisation macros.
#pragma once

#include "Internationalization/Text.h"

class FInternationalization
{
public:
	[[nodiscard]] static CORE_API FText ForUseOnlyByLocMacroAndGraphNodeTextLiterals_CreateText(
		const TCHAR* InTextLiteral, const TCHAR* InNamespace, const TCHAR* InKey);
};

#define NSLOCTEXT(InNamespace, InKey, InTextLiteral) \
	FInternationalization::ForUseOnlyByLocMacroAndGraphNodeTextLiterals_CreateText(TEXT(InTextLiteral), TEXT(InNamespace), TEXT(InKey))
#define LOCTEXT(InKey, InTextLiteral) NSLOCTEXT(LOCTEXT_NAMESPACE, InKey, InTextLiteral)
#define INVTEXT(InTextLiteral) FText::AsCultureInvariant(FString(TEXT(InTextLiteral)))
