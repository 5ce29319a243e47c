#include "Internationalization/Internationalization.h"
#include "Internationalization/Text.h"

FText::FText() = default;

FText FText::FromString(const FString& String)
{
	FText Result;
	Result.DisplayString = String;
	return Result;
}

FText FText::FromString(FString&& String)
{
	FText Result;
	Result.DisplayString = MoveTemp(String);
	return Result;
}

FText FText::FromName(const FName& Name)
{
	return FromString(Name.ToString());
}

FText FText::AsCultureInvariant(const FString& String)
{
	return FromString(String);
}

FText FText::AsLocalizable_Advanced(const TCHAR* Namespace, const TCHAR* Key, const TCHAR* String)
{
	FText Result;
	Result.DisplayString = String;
	Result.Namespace = Namespace;
	Result.Key = Key;
	return Result;
}

const FText& FText::GetEmpty()
{
	static const FText Empty;
	return Empty;
}

FText FInternationalization::ForUseOnlyByLocMacroAndGraphNodeTextLiterals_CreateText(const TCHAR* InTextLiteral, const TCHAR* InNamespace, const TCHAR* InKey)
{
	// Only the source culture exists here, so the literal is the display text.
	return FText::AsLocalizable_Advanced(InNamespace, InKey, InTextLiteral);
}
