#include "Request/NaniteAssemblyContextPath.h"

FString FNaniteAssemblyContextPath::ToString() const
{
	FString Out;
	AppendTo(Out);
	return Out;
}

void FNaniteAssemblyContextPath::AppendTo(FString& Out) const
{
	if (Root)
	{
		Out += *Root;
		return;
	}
	Parent->AppendTo(Out);
	Out += Suffix;
	if (bHasPosition)
	{
		Out += FString::Printf(TEXT("[%lld]"), (long long)Position);
	}
}
