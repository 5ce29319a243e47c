#include "Misc/EngineVersion.h"

FEngineVersion::FEngineVersion(uint16 InMajor, uint16 InMinor, uint16 InPatch, uint32 InChangelist, const FString& InBranch)
	: FEngineVersionBase(InMajor, InMinor, InPatch, InChangelist)
	, Branch(InBranch)
{
}

const FEngineVersion& FEngineVersion::Current()
{
	static const FEngineVersion Version(5, 7, 1, 47537391, TEXT("++UE5+Release-5.7"));
	return Version;
}

FString FEngineVersion::ToString(EVersionComponent LastComponent) const
{
	FString Result = FString::Printf(TEXT("%u"), (uint32)Major);
	if (LastComponent >= EVersionComponent::Minor)
	{
		Result += FString::Printf(TEXT(".%u"), (uint32)Minor);
	}
	if (LastComponent >= EVersionComponent::Patch)
	{
		Result += FString::Printf(TEXT(".%u"), (uint32)Patch);
	}
	if (LastComponent >= EVersionComponent::Changelist)
	{
		Result += FString::Printf(TEXT("-%u"), Changelist);
	}
	if (LastComponent >= EVersionComponent::Branch && !Branch.IsEmpty())
	{
		Result += FString::Printf(TEXT("+%s"), *Branch);
	}
	return Result;
}
