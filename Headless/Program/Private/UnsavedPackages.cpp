#include "Headless/UnsavedPackages.h"

#include "FileHelpers.h"
#include "Headless/EngineLog.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UObjectHash.h"

#include <algorithm>

namespace UE::Headless
{
	TArray<UPackage*> GetUnsavedPackages()
	{
		TArray<UPackage*> Packages;
		ForEachObjectOfClass(UPackage::StaticClass(), [&Packages](UObject* Object)
		{
			UPackage* Package = static_cast<UPackage*>(Object);
			const FString Name = Package->GetName();
			const bool bUserContent = Package != GetTransientPackage() && !Package->HasAnyPackageFlags(PKG_CompiledIn)
				&& !Name.StartsWith(TEXT("/Engine/")) && !Name.StartsWith(TEXT("/Script/")) && !Name.StartsWith(TEXT("/Temp/"));
			if (bUserContent && Package->IsDirty())
			{
				Packages.Add(Package);
			}
		});
		std::sort(Packages.begin(), Packages.end(), [](const UPackage* A, const UPackage* B)
		{
			return A->GetName().Compare(B->GetName(), ESearchCase::CaseSensitive) < 0;
		});
		return Packages;
	}

	bool SaveChangedPackages(const TArray<UPackage*>& Packages, FString& OutError)
	{
		const int32 FirstLine = GetEngineLog().Num();
		if (UEditorLoadingAndSavingUtils::SavePackages(Packages, true))
		{
			return true;
		}
		TArray<FString> Errors;
		const TArray<FEngineLogLine>& Log = GetEngineLog();
		for (int32 Index = std::min(FirstLine, Log.Num()); Index < Log.Num(); ++Index)
		{
			if (Log[Index].Verbosity <= ELogVerbosity::Error)
			{
				Errors.Add(Log[Index].Message);
			}
		}
		OutError = Errors.IsEmpty() ? FString(TEXT("the editor did not save every package")) : FString::Join(Errors, TEXT(" "));
		return false;
	}
}
