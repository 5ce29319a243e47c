#include "Editor.h"

#include "CoreGlobals.h"
#include "Editor/TransBuffer.h"
#include "Headless/ObjectRegistry.h"
#include "Templates/Casts.h"
#include "StaticMeshCompiler.h"

IMPLEMENT_HEADLESS_CLASS(UEditorEngine, "EditorEngine")

UEditorEngine* GEditor = nullptr;

int32 UEditorEngine::BeginTransaction(const TCHAR* TransactionContext, const FText& Description, UObject* PrimaryObject)
{
	return CanTransact() ? Trans->Begin(TransactionContext, Description) : INDEX_NONE;
}

int32 UEditorEngine::BeginTransaction(const FText& Description)
{
	return BeginTransaction(nullptr, Description, nullptr);
}

int32 UEditorEngine::EndTransaction()
{
	return Trans ? Trans->End() : INDEX_NONE;
}

void UEditorEngine::CancelTransaction(int32 Index)
{
	if (Trans)
	{
		Trans->Cancel(Index);
	}
}

bool UEditorEngine::UndoTransaction(bool bCanRedo)
{
	return Trans && Trans->Undo(bCanRedo);
}

bool UEditorEngine::RedoTransaction()
{
	return Trans && Trans->Redo();
}

bool UEditorEngine::IsTransactionActive() const
{
	return Trans && Trans->IsActive();
}

FText UEditorEngine::GetTransactionName() const
{
	const UTransBuffer* Buffer = Cast<UTransBuffer>(Trans.Get());
	return Buffer ? Buffer->GetOpenTransactionTitle() : FText();
}

bool UEditorEngine::CanTransact()
{
	return Trans && !GIsEditorLoadingPackage;
}

void UEditorEngine::Tick(float DeltaSeconds, bool bIdleMode)
{
	FStaticMeshCompilingManager::Get().ProcessAsyncTasks(true);
}
