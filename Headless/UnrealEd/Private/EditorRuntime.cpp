#include "Headless/EditorRuntime.h"

#include "Editor.h"
#include "Editor/TransBuffer.h"
#include "Headless/AssetRegistryState.h"
#include "Headless/Faults.h"
#include "Headless/ObjectRegistry.h"
#include "Headless/PackageFileStore.h"
#include "Headless/PackageLoadFaults.h"
#include "Internationalization/Internationalization.h"
#include "Misc/Paths.h"
#include "StaticMeshCompiler.h"
#include "Templates/Casts.h"
#include "UObject/ObjectSaveContext.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	struct FRuntimeState
	{
		TArray<UE::Headless::FSavedPackageNotification> SavedPackages;
		UEditorEngine* StashedEditor = nullptr;
		bool bListening = false;
	};

	FRuntimeState& State()
	{
		static FRuntimeState Runtime;
		return Runtime;
	}
}

namespace UE::Headless
{
	void StartEditorRuntime()
	{
		FRuntimeState& Runtime = State();
		// A new editor starts with nothing of an earlier one in memory.
		FStaticMeshCompilingManager::Get().FinishAllCompilation();
		ResetObjectWorld();
		ClearFaults();
		ClearPackageLoadFaults();
		// What a save cut short by a crash left beside the project's package files.
		RemoveStaleTemporaryFiles(FPaths::ProjectContentDir());
		RemoveStaleTemporaryFiles(FPaths::ProjectSavedDir());
		Runtime.SavedPackages.Reset();
		Runtime.StashedEditor = nullptr;
		SetAssetRegistryAvailable(true);

		GEditor = NewObject<UEditorEngine>(GetTransientPackage(), NAME_None, RF_Transient);
		GEditor->AddToRoot();
		GEditor->Trans = NewObject<UTransBuffer>(GEditor, NAME_None, RF_Transient);
		GEditor->Trans->AddToRoot();
		// As UTransBuffer::Initialize does when the editor creates its buffer.
		GEditor->Trans->Reset(NSLOCTEXT("UnrealEd", "Startup", "Startup"));

		if (!Runtime.bListening)
		{
			Runtime.bListening = true;
			UPackage::PackageSavedWithContextEvent.AddLambda([](const FString& Filename, UPackage* Package, FObjectPostSaveContext)
			{
				State().SavedPackages.Add(FSavedPackageNotification{ Package ? Package->GetName() : FString(), Filename, GetTransactionDepth() });
			});
		}
	}

	void StopEditorRuntime()
	{
		FStaticMeshCompilingManager::Get().FinishAllCompilation();
		FRuntimeState& Runtime = State();
		UEditorEngine* Editor = GEditor ? GEditor : Runtime.StashedEditor;
		if (Editor)
		{
			Editor->RemoveFromRoot();
			if (Editor->Trans)
			{
				Editor->Trans->RemoveFromRoot();
			}
		}
		GEditor = nullptr;
		Runtime.StashedEditor = nullptr;
	}

	void TickEditor()
	{
		if (GEditor)
		{
			GEditor->Tick(0.0f, false);
		}
		else
		{
			FStaticMeshCompilingManager::Get().ProcessAsyncTasks(true);
		}
	}

	void SetEditorAvailable(bool bAvailable)
	{
		FRuntimeState& Runtime = State();
		if (!bAvailable && GEditor)
		{
			Runtime.StashedEditor = GEditor;
			GEditor = nullptr;
		}
		else if (bAvailable && !GEditor && Runtime.StashedEditor)
		{
			GEditor = Runtime.StashedEditor;
			Runtime.StashedEditor = nullptr;
		}
	}

	const TArray<FSavedPackageNotification>& GetSavedPackageNotifications()
	{
		return State().SavedPackages;
	}

	int32 FTransBufferAccess::GetActiveCount(const UTransBuffer& Buffer)
	{
		return Buffer.GetActiveCount();
	}

	FText FTransBufferAccess::GetTransactionTitle(const UTransBuffer& Buffer, int32 Index)
	{
		return Buffer.GetTransactionTitle(Index);
	}

	int32 GetTransactionDepth()
	{
		UEditorEngine* Editor = GEditor ? GEditor : State().StashedEditor;
		const UTransBuffer* Buffer = Editor ? Cast<UTransBuffer>(Editor->Trans.Get()) : nullptr;
		return Buffer ? FTransBufferAccess::GetActiveCount(*Buffer) : 0;
	}

	TArray<FString> GetUndoHistory()
	{
		TArray<FString> Titles;
		UEditorEngine* Editor = GEditor ? GEditor : State().StashedEditor;
		UTransBuffer* Buffer = Editor ? Cast<UTransBuffer>(Editor->Trans.Get()) : nullptr;
		if (Buffer)
		{
			const int32 Undoable = Buffer->GetQueueLength() - Buffer->GetUndoCount() - (Buffer->IsActive() ? 1 : 0);
			for (int32 Index = 0; Index < Undoable; ++Index)
			{
				Titles.Add(FTransBufferAccess::GetTransactionTitle(*Buffer, Index).ToString());
			}
		}
		return Titles;
	}
}
