#include "ObjectWorld.h"

#include "CoreGlobals.h"
#include "Headless/Faults.h"
#include "Headless/ObjectRegistry.h"
#include "Logging/LogMacros.h"
#include "Misc/ITransaction.h"
#include "Serialization/Archive.h"
#include "UObject/Class.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UObjectHash.h"

DEFINE_LOG_CATEGORY_STATIC(LogUObjectGlobals, Log, All);


namespace UE::Headless::Private
{
	FObjectWorld& FObjectWorld::Get()
	{
		static FObjectWorld* World = new FObjectWorld();
		return *World;
	}

	std::u16string FObjectWorld::MakeKey(FStringView PathName)
	{
		std::u16string Key(PathName.GetData(), (size_t)PathName.Len());
		for (char16_t& Char : Key)
		{
			if (Char >= u'A' && Char <= u'Z')
			{
				Char = (char16_t)(Char + 32);
			}
		}
		return Key;
	}

	void FObjectWorld::Add(UObject* Object)
	{
		Objects.push_back(Object);
		ByPath[MakeKey(Object->GetPathName())].push_back(Object);
	}

	UObject* FObjectWorld::Find(FStringView PathName, bool bIncludeGarbage) const
	{
		const auto Found = ByPath.find(MakeKey(PathName));
		if (Found == ByPath.end())
		{
			return nullptr;
		}
		for (auto It = Found->second.rbegin(); It != Found->second.rend(); ++It)
		{
			if (bIncludeGarbage || !(*It)->HasAnyInternalFlags(EInternalObjectFlags::Garbage))
			{
				return *It;
			}
		}
		return nullptr;
	}

	void FObjectWorld::DropUnrootedObjects()
	{
		std::vector<UObject*> Kept;
		for (UObject* Object : Objects)
		{
			const UPackage* Package = Object->GetOutermost();
			const bool bKeep = Object->IsRooted() || (Package && Package->HasAnyPackageFlags(PKG_CompiledIn));
			if (bKeep)
			{
				Kept.push_back(Object);
			}
			else
			{
				Object->ClearFlags(RF_Public | RF_Standalone);
				Object->MarkAsGarbage();
				Dropped.push_back(Object);
			}
		}
		Objects = std::move(Kept);
		ByPath.clear();
		for (UObject* Object : Objects)
		{
			ByPath[MakeKey(Object->GetPathName())].push_back(Object);
		}
	}

	void FObjectAccess::Initialize(UObjectBase& Object, UClass* Class, FName Name, UObject* Outer, EObjectFlags Flags)
	{
		Object.ClassPrivate = Class;
		Object.NamePrivate = Name;
		Object.OuterPrivate = Outer;
		Object.ObjectFlags = Flags;
	}

	void FObjectAccess::InitializeClass(UClass& Class, UClass* SuperClass, FConstructObjectFunction Construct, EClassFlags Flags)
	{
		Class.SuperStruct = SuperClass;
		Class.ConstructFunction = Construct;
		Class.ClassFlags = Flags;
	}

	FConstructObjectFunction FObjectAccess::GetConstructFunction(const UClass& Class)
	{
		return Class.ConstructFunction;
	}

	UObject* ConstructObjectInternal(UClass* Class, UObject* Outer, FName Name, EObjectFlags Flags)
	{
		UObject* Object = FObjectAccess::GetConstructFunction(*Class)();
		FObjectAccess::Initialize(*Object, Class, Name, Outer, Flags);
		FObjectWorld::Get().Add(Object);
		return Object;
	}

	UPackage* CreatePackageInternal(const FString& PackageName)
	{
		return (UPackage*)ConstructObjectInternal(UPackage::StaticClass(), nullptr, FName(PackageName), RF_Public);
	}

	namespace
	{
		struct FCoreClasses
		{
			UClass* Object = nullptr;
			UClass* Field = nullptr;
			UClass* Struct = nullptr;
			UClass* Class = nullptr;
			UClass* Package = nullptr;
		};

		UPackage* FindOrCreateScriptPackage(const TCHAR* PackageName, UClass* PackageClass)
		{
			if (UObject* Existing = FObjectWorld::Get().Find(PackageName, false))
			{
				return (UPackage*)Existing;
			}
			UPackage* Package = new UPackage();
			FObjectAccess::Initialize(*Package, PackageClass, FName(PackageName), nullptr, RF_Public | RF_Standalone);
			Package->SetPackageFlags(PKG_CompiledIn | PKG_ContainsScript);
			Package->AddToRoot();
			FObjectWorld::Get().Add(Package);
			return Package;
		}

		UClass* MakeClass(UClass* MetaClass, const TCHAR* Name, UPackage* Package, UClass* SuperClass, FConstructObjectFunction Construct, EClassFlags Flags)
		{
			UClass* Class = new UClass();
			FObjectAccess::InitializeClass(*Class, SuperClass, Construct, Flags | CLASS_Native);
			FObjectAccess::Initialize(*Class, MetaClass, FName(Name), (UObject*)Package, RF_Public | RF_Standalone | RF_MarkAsNative);
			Class->AddToRoot();
			return Class;
		}

		UObject* ConstructClassObject() { return new UClass(); }
		UObject* ConstructPackageObject() { return new UPackage(); }
		UObject* ConstructNothing() { return nullptr; }

		// The classes that describe classes and packages cannot register through the general path, which
		// needs them; they are made together, once. The pointers are set before the objects enter the
		// table, because entering computes paths, which asks for these classes again.
		const FCoreClasses& GetCoreClasses()
		{
			static FCoreClasses Classes;
			if (Classes.Object)
			{
				return Classes;
			}
			UClass* ClassClass = new UClass();
			UClass* PackageClass = new UClass();
			UPackage* ScriptPackage = FindOrCreateScriptPackage(TEXT("/Script/CoreUObject"), PackageClass);

			UClass* ObjectClass = MakeClass(ClassClass, TEXT("Object"), ScriptPackage, nullptr, &FObjectAccess::Construct<UObject>, CLASS_None);
			UClass* FieldClass = MakeClass(ClassClass, TEXT("Field"), ScriptPackage, ObjectClass, &ConstructNothing, CLASS_Abstract);
			UClass* StructClass = MakeClass(ClassClass, TEXT("Struct"), ScriptPackage, FieldClass, &ConstructNothing, CLASS_None);

			FObjectAccess::InitializeClass(*ClassClass, StructClass, &ConstructClassObject, CLASS_Native);
			FObjectAccess::Initialize(*ClassClass, ClassClass, FName(TEXT("Class")), (UObject*)ScriptPackage, RF_Public | RF_Standalone | RF_MarkAsNative);
			ClassClass->AddToRoot();
			FObjectAccess::InitializeClass(*PackageClass, ObjectClass, &ConstructPackageObject, CLASS_Native);
			FObjectAccess::Initialize(*PackageClass, ClassClass, FName(TEXT("Package")), (UObject*)ScriptPackage, RF_Public | RF_Standalone | RF_MarkAsNative);
			PackageClass->AddToRoot();

			Classes.Class = ClassClass;
			Classes.Package = PackageClass;
			Classes.Field = FieldClass;
			Classes.Struct = StructClass;
			Classes.Object = ObjectClass;
			for (UClass* Class : { ObjectClass, FieldClass, StructClass, ClassClass, PackageClass })
			{
				FObjectWorld::Get().Add(Class);
			}
			return Classes;
		}
	}
}

namespace UE::Headless
{
	UClass* RegisterClass(const TCHAR* ClassName, const TCHAR* PackageName, UClass* SuperClass, Private::FConstructObjectFunction Construct, EClassFlags Flags)
	{
		using namespace Private;
		UPackage* Package = FindOrCreateScriptPackage(PackageName, UPackage::StaticClass());
		UClass* Class = MakeClass(UClass::StaticClass(), ClassName, Package, SuperClass, Construct, Flags);
		FObjectWorld::Get().Add(Class);
		return Class;
	}

	void ResetObjectWorld()
	{
		Private::FObjectWorld::Get().DropUnrootedObjects();
	}

	UObject* FindObjectIncludingGarbage(FStringView PathName)
	{
		return Private::FObjectWorld::Get().Find(PathName, true);
	}

	TArray<FString> DescribeObjectFlags(EObjectFlags Flags)
	{
		static const struct
		{
			EObjectFlags Flag;
			const TCHAR* Name;
		} Names[] = {
			{ RF_Public, TEXT("RF_Public") },
			{ RF_Standalone, TEXT("RF_Standalone") },
			{ RF_MarkAsNative, TEXT("RF_MarkAsNative") },
			{ RF_Transactional, TEXT("RF_Transactional") },
			{ RF_ClassDefaultObject, TEXT("RF_ClassDefaultObject") },
			{ RF_ArchetypeObject, TEXT("RF_ArchetypeObject") },
			{ RF_Transient, TEXT("RF_Transient") },
			{ RF_MarkAsRootSet, TEXT("RF_MarkAsRootSet") },
			{ RF_TagGarbageTemp, TEXT("RF_TagGarbageTemp") },
			{ RF_NeedInitialization, TEXT("RF_NeedInitialization") },
			{ RF_NeedLoad, TEXT("RF_NeedLoad") },
			{ RF_KeepForCooker, TEXT("RF_KeepForCooker") },
			{ RF_NeedPostLoad, TEXT("RF_NeedPostLoad") },
			{ RF_NeedPostLoadSubobjects, TEXT("RF_NeedPostLoadSubobjects") },
			{ RF_NewerVersionExists, TEXT("RF_NewerVersionExists") },
			{ RF_BeginDestroyed, TEXT("RF_BeginDestroyed") },
			{ RF_FinishDestroyed, TEXT("RF_FinishDestroyed") },
			{ RF_BeingRegenerated, TEXT("RF_BeingRegenerated") },
			{ RF_DefaultSubObject, TEXT("RF_DefaultSubObject") },
			{ RF_WasLoaded, TEXT("RF_WasLoaded") },
			{ RF_TextExportTransient, TEXT("RF_TextExportTransient") },
			{ RF_LoadCompleted, TEXT("RF_LoadCompleted") },
			{ RF_InheritableComponentTemplate, TEXT("RF_InheritableComponentTemplate") },
			{ RF_DuplicateTransient, TEXT("RF_DuplicateTransient") },
			{ RF_StrongRefOnFrame, TEXT("RF_StrongRefOnFrame") },
			{ RF_NonPIEDuplicateTransient, TEXT("RF_NonPIEDuplicateTransient") },
			{ RF_WillBeLoaded, TEXT("RF_WillBeLoaded") },
			{ RF_HasExternalPackage, TEXT("RF_HasExternalPackage") },
			{ RF_AllocatedInSharedPage, TEXT("RF_AllocatedInSharedPage") },
		};
		TArray<FString> Result;
		for (const auto& Entry : Names)
		{
			if (Flags & Entry.Flag)
			{
				Result.Add(Entry.Name);
			}
		}
		return Result;
	}
}

UClass* UObject::GetPrivateStaticClass()
{
	return UE::Headless::Private::GetCoreClasses().Object;
}

UClass* UField::StaticClass()
{
	return UE::Headless::Private::GetCoreClasses().Field;
}

UClass* UStruct::StaticClass()
{
	return UE::Headless::Private::GetCoreClasses().Struct;
}

UClass* UClass::StaticClass()
{
	return UE::Headless::Private::GetCoreClasses().Class;
}

UClass* UPackage::GetPrivateStaticClass()
{
	return UE::Headless::Private::GetCoreClasses().Package;
}

bool UStruct::IsChildOf(const UStruct* SomeBase) const
{
	if (!SomeBase)
	{
		return false;
	}
	for (const UStruct* Struct = this; Struct; Struct = Struct->GetSuperStruct())
	{
		if (Struct == SomeBase)
		{
			return true;
		}
	}
	return false;
}

UObject::~UObject() = default;

// As the engine's: records the object in the open transaction if it is transactional and lives in neither a
// script nor a Play In Editor package, dirtying its package first when asked.
static bool SaveToTransactionBuffer(UObject* Object, bool bMarkDirty)
{
	const UPackage* Package = Object->GetOutermost();
	if (!GUndo || !Object->HasAnyFlags(RF_Transactional) || (Package && Package->HasAnyPackageFlags(PKG_PlayInEditor | PKG_ContainsScript)))
	{
		return false;
	}
	if (bMarkDirty)
	{
		Object->MarkPackageDirty();
	}
	GUndo->SaveObject(Object);
	return true;
}

bool UObject::Modify(bool bAlwaysMarkDirty)
{
	// Objects of script packages are neither recorded nor dirtied, as in the engine.
	const UPackage* Package = GetOutermost();
	if (Package && Package->HasAnyPackageFlags(PKG_ContainsScript | PKG_CompiledIn))
	{
		return false;
	}
	// Garbage is not recorded: here it stands for objects the engine would have collected by now, such as
	// those an editor restart dropped.
	const bool bSavedToTransactionBuffer = !HasAnyInternalFlags(EInternalObjectFlags::Garbage) && SaveToTransactionBuffer(this, bAlwaysMarkDirty);
	if (!bSavedToTransactionBuffer && bAlwaysMarkDirty)
	{
		MarkPackageDirty();
	}
	return bSavedToTransactionBuffer;
}

void UObject::Serialize(FArchive& Ar)
{
}

void UObject::PostLoad()
{
}

void UObject::PostEditChange()
{
}

void UObject::PreEditUndo()
{
}

void UObject::PostEditUndo()
{
}

bool UObject::IsAsset() const
{
	if (HasAnyFlags(RF_Transient | RF_ClassDefaultObject) || !HasAnyFlags(RF_Public) || HasAnyInternalFlags(EInternalObjectFlags::Garbage))
	{
		return false;
	}
	UObject* Outer = GetOuter();
	if (!Outer || !Outer->IsA<UPackage>())
	{
		return false;
	}
	return Outer != GetTransientPackage() && !Outer->HasAnyFlags(RF_Transient);
}

bool IsValid(const UObject* Test)
{
	return Test && !Test->HasAnyInternalFlags(EInternalObjectFlags::Garbage);
}

void UObjectBaseUtility::GetPathName(const UObject* StopOuter, FString& ResultString) const
{
	if ((const UObjectBaseUtility*)this == (const UObjectBaseUtility*)StopOuter)
	{
		ResultString += TEXT("None");
		return;
	}
	UObject* Outer = GetOuter();
	if (Outer && Outer != StopOuter)
	{
		Outer->GetPathName(StopOuter, ResultString);
		// A subobject of an asset is separated by ':'; everything else by '.'.
		UObject* OuterOuter = Outer->GetOuter();
		if (Outer->GetClass() != UPackage::StaticClass() && OuterOuter && OuterOuter->GetClass() == UPackage::StaticClass())
		{
			ResultString += TEXT(":");
		}
		else
		{
			ResultString += TEXT(".");
		}
	}
	ResultString += GetName();
}

FString UObjectBaseUtility::GetPathName(const UObject* StopOuter) const
{
	FString Result;
	GetPathName(StopOuter, Result);
	return Result;
}

FString UObjectBaseUtility::GetFullName(const UObject* StopOuter) const
{
	return GetClass()->GetName() + TEXT(" ") + GetPathName(StopOuter);
}

UObject* UObjectBaseUtility::GetOutermostObject() const
{
	UObject* Top = (UObject*)this;
	while (Top->GetOuter())
	{
		Top = Top->GetOuter();
	}
	return Top;
}

UPackage* UObjectBaseUtility::GetOutermost() const
{
	UObject* Top = GetOutermostObject();
	return Top->IsA(UPackage::StaticClass()) ? (UPackage*)Top : nullptr;
}

UPackage* UObjectBaseUtility::GetPackage() const
{
	return GetOutermost();
}

bool UObjectBaseUtility::IsA(const UClass* SomeBase) const
{
	return GetClass() && GetClass()->IsChildOf(SomeBase);
}

bool UObjectBaseUtility::MarkPackageDirty() const
{
	UPackage* Package = GetOutermost();
	if (!Package)
	{
		return false;
	}
	// Transient objects never dirty their package, but the call counts as done.
	for (const UObjectBaseUtility* Object = this; Object; Object = Object->GetOuter())
	{
		if (Object->HasAnyFlags(RF_Transient))
		{
			return true;
		}
	}
	const bool bAllowed = GIsEditor && !GIsEditorLoadingPackage && !GIsTransacting && !Package->HasAnyPackageFlags(PKG_Cooked | PKG_PlayInEditor);
	if (!bAllowed)
	{
		return false;
	}
	const bool bWasDirty = Package->IsDirty();
	if (!bWasDirty)
	{
		Package->SetDirtyFlag(true);
	}
	UPackage::PackageMarkedDirtyEvent.Broadcast(Package, bWasDirty);
	return true;
}

UPackage* GetTransientPackage()
{
	static UPackage* TransientPackage = []
	{
		UPackage* Package = UE::Headless::Private::CreatePackageInternal(TEXT("/Engine/Transient"));
		Package->SetFlags(RF_Transient);
		Package->AddToRoot();
		return Package;
	}();
	return TransientPackage;
}

UObject* GetTransientPackageAsObject()
{
	return GetTransientPackage();
}

// The path an object named Name would have below Outer, with the separators GetPathName uses.
static FString PathBelowOuter(const FString& OuterPath, const UObject* Outer, FName Name)
{
	if (!Outer)
	{
		return Name.ToString();
	}
	const UObject* OuterOuter = Outer->GetOuter();
	const bool bSubobjectOfAsset = !Outer->IsA<UPackage>() && OuterOuter && OuterOuter->IsA<UPackage>();
	return OuterPath + (bSubobjectOfAsset ? TEXT(":") : TEXT(".")) + Name.ToString();
}

FName MakeUniqueObjectName(UObject* Outer, const UClass* Class, FName BaseName)
{
	// As in the engine, the numbers come from one counter per class, whatever the outer, so that making many
	// objects never searches through the names already taken.
	const FName Base = BaseName.IsNone() ? Class->GetFName() : BaseName;
	const FString OuterPath = Outer ? Outer->GetPathName() : FString();
	UClass* MutableClass = const_cast<UClass*>(Class);
	for (;;)
	{
		const FName Candidate(Base, ++MutableClass->ClassUnique);
		const FString Path = PathBelowOuter(OuterPath, Outer, Candidate);
		if (!UE::Headless::FindObjectIncludingGarbage(Path))
		{
			return Candidate;
		}
	}
}

UObject* StaticConstructObject_Internal(const FStaticConstructObjectParameters& Params)
{
	FString FaultReason;
	if (UE::Headless::ConsumeFault(TEXT("NewObject"), &FaultReason))
	{
		UE_LOG(LogUObjectGlobals, Error, TEXT("NewObject failed for class '%s' (injected fault%s%s)."),
			Params.Class ? *Params.Class->GetName() : TEXT("None"), FaultReason.IsEmpty() ? TEXT("") : TEXT(": "), *FaultReason);
		return nullptr;
	}
	UClass* Class = const_cast<UClass*>(Params.Class);
	if (!Class || Class->HasAnyClassFlags(CLASS_Abstract) || !UE::Headless::Private::FObjectAccess::GetConstructFunction(*Class))
	{
		UE_LOG(LogUObjectGlobals, Error, TEXT("Class '%s' is abstract or unknown and cannot be instanced."), Class ? *Class->GetName() : TEXT("None"));
		return nullptr;
	}
	UObject* Outer = Params.Outer;
	if (!Outer && !Class->IsChildOf(UPackage::StaticClass()))
	{
		Outer = GetTransientPackage();
	}
	const FName Name = Params.Name.IsNone() ? MakeUniqueObjectName(Outer, Class) : Params.Name;

	// An object already at this path is replaced by the new one, as the engine re-creates it in place.
	const FString Path = PathBelowOuter(Outer ? Outer->GetPathName() : FString(), Outer, Name);
	if (UObject* Existing = UE::Headless::Private::FObjectWorld::Get().Find(Path, false))
	{
		if (Existing->IsRooted())
		{
			UE_LOG(LogUObjectGlobals, Error, TEXT("Cannot replace rooted object '%s'."), *Path);
			return nullptr;
		}
		Existing->ClearFlags(RF_Public | RF_Standalone);
		Existing->MarkAsGarbage();
	}
	UObject* Result = UE::Headless::Private::ConstructObjectInternal(Class, Outer, Name, Params.SetFlags);
	// As in the engine, a transactional object made inside a transaction is recorded as garbage, so that
	// undoing the transaction takes the creation back and redoing it brings the object again.
	if (GIsEditor && GUndo && (Params.SetFlags & RF_Transactional) && !(Params.SetFlags & RF_NeedLoad) && !Class->IsChildOf(UField::StaticClass()))
	{
		Result->MarkAsGarbage();
		SaveToTransactionBuffer(Result, false);
		Result->ClearGarbage();
	}
	return Result;
}

void GetObjectsWithOuter(const UObjectBase* Outer, TArray<UObject*>& Results, bool bIncludeNestedObjects, EObjectFlags ExclusionFlags,
	EInternalObjectFlags ExclusionInternalFlags)
{
	Results.Reset();
	UE::Headless::Private::FObjectWorld::Get().ForEach([&](UObject* Object)
	{
		if (Object->HasAnyInternalFlags(EInternalObjectFlags::Garbage) || Object->HasAnyFlags(ExclusionFlags))
		{
			return;
		}
		for (UObject* Candidate = Object->GetOuter(); Candidate; Candidate = bIncludeNestedObjects ? Candidate->GetOuter() : nullptr)
		{
			if ((const UObjectBase*)Candidate == Outer)
			{
				Results.Add(Object);
				return;
			}
		}
	});
}

void ForEachObjectOfClass(const UClass* ClassToLookFor, const std::function<void(UObject*)>& Operation, bool bIncludeDerivedClasses, EObjectFlags ExcludeFlags,
	EInternalObjectFlags ExclusionInternalFlags)
{
	TArray<UObject*> Matches;
	UE::Headless::Private::FObjectWorld::Get().ForEach([&](UObject* Object)
	{
		if (!Object->HasAnyInternalFlags(EInternalObjectFlags::Garbage) && !Object->HasAnyFlags(ExcludeFlags)
			&& (bIncludeDerivedClasses ? Object->IsA(ClassToLookFor) : Object->GetClass() == ClassToLookFor))
		{
			Matches.Add(Object);
		}
	});
	for (UObject* Object : Matches)
	{
		Operation(Object);
	}
}
