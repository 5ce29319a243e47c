// The place in the build argument that a message names, such as
// "nanite_assembly_build parts[2].transforms[1].location". It is a chain of small records on the caller's
// stack and becomes text only when a message needs it, so reading a large request formats nothing.
#pragma once

#include "CoreMinimal.h"

class FNaniteAssemblyContextPath
{
public:
	// A root path, such as "nanite_assembly_build"; the text must outlive the path.
	explicit FNaniteAssemblyContextPath(const FString& InRoot)
		: Root(&InRoot)
	{
	}

	// The parent path followed by Suffix, such as ".location".
	FNaniteAssemblyContextPath(const FNaniteAssemblyContextPath& InParent, const TCHAR* InSuffix)
		: Parent(&InParent)
		, Suffix(InSuffix)
	{
	}

	// The parent path followed by Suffix and a one-based position in brackets, such as " parts[2]".
	FNaniteAssemblyContextPath(const FNaniteAssemblyContextPath& InParent, const TCHAR* InSuffix, int64 InPosition)
		: Parent(&InParent)
		, Suffix(InSuffix)
		, Position(InPosition)
		, bHasPosition(true)
	{
	}

	[[nodiscard]] FString ToString() const;

private:
	void AppendTo(FString& Out) const;

	const FString* Root = nullptr;
	const FNaniteAssemblyContextPath* Parent = nullptr;
	const TCHAR* Suffix = nullptr;
	int64 Position = 0;
	bool bHasPosition = false;
};
