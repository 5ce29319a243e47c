// The build itself: one editor transaction around Begin / AddAssemblyParts / Finish, roll-back when the
// build owns the transaction and fails, then the compile wait and the save outside the transaction.
#pragma once

#include "CoreMinimal.h"

class FLuaSessionData;
class FScopedTransaction;
class UPackage;
class UStaticMesh;
struct FNaniteAssemblyBuildRequest;

struct FNaniteAssemblyBuildOutcome
{
	// Set at the end of a build that stood; also after a failed save, when the build itself stands.
	UStaticMesh* Mesh = nullptr;
	FString PackageName;
	FString ObjectPath;
	bool bCreated = false;
	bool bOverwritten = false;
	bool bSaved = false;
	bool bCompiled = false;
	bool bTransactionOwned = false;
};

// The dirty flags of the packages a build touches, as they stood before it, in the order first seen.
class FPackageDirtySnapshot
{
public:
	// Null packages and packages already entered are skipped.
	void Add(UPackage* Package);
	void Restore() const;

private:
	TArray<TPair<UPackage*, bool>> Entries;
};

// What a roll-back needs to know of the build it undoes.
struct FNaniteAssemblyAbortContext
{
	bool bOwnsTransaction = false;
	bool bCreated = false;
	UStaticMesh* Mesh = nullptr;
	bool bAddedTransactional = false;
	const FPackageDirtySnapshot& DirtySnapshot;
	FScopedTransaction& Transaction;
	FString& Error;
};

// True when the build stood (and, when asked, the save succeeded); otherwise Error holds the message.
bool ExecuteNaniteAssemblyBuild(const FNaniteAssemblyBuildRequest& Request, FLuaSessionData& Session, FNaniteAssemblyBuildOutcome& OutOutcome, FString& OutError);

// Takes back what a failed build did when it owns the transaction; inside a caller's transaction it only
// says so in the message. Always returns false.
bool AbortNaniteAssemblyBuild(const FNaniteAssemblyAbortContext& Context, const FString& Message);
