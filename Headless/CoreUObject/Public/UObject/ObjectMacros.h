// Object flags, load flags, package flags and the reflection markers of engine headers.
#pragma once

#include "HAL/Platform.h"
#include "Templates/UnrealTemplate.h"

enum EObjectFlags : uint32
{
	RF_NoFlags = 0x00000000,
	RF_Public = 0x00000001,
	RF_Standalone = 0x00000002,
	RF_MarkAsNative = 0x00000004,
	RF_Transactional = 0x00000008,
	RF_ClassDefaultObject = 0x00000010,
	RF_ArchetypeObject = 0x00000020,
	RF_Transient = 0x00000040,
	RF_MarkAsRootSet = 0x00000080,
	RF_TagGarbageTemp = 0x00000100,
	RF_NeedInitialization = 0x00000200,
	RF_NeedLoad = 0x00000400,
	RF_KeepForCooker = 0x00000800,
	RF_NeedPostLoad = 0x00001000,
	RF_NeedPostLoadSubobjects = 0x00002000,
	RF_NewerVersionExists = 0x00004000,
	RF_BeginDestroyed = 0x00008000,
	RF_FinishDestroyed = 0x00010000,
	RF_BeingRegenerated = 0x00020000,
	RF_DefaultSubObject = 0x00040000,
	RF_WasLoaded = 0x00080000,
	RF_TextExportTransient = 0x00100000,
	RF_LoadCompleted = 0x00200000,
	RF_InheritableComponentTemplate = 0x00400000,
	RF_DuplicateTransient = 0x00800000,
	RF_StrongRefOnFrame = 0x01000000,
	RF_NonPIEDuplicateTransient = 0x02000000,
	RF_WillBeLoaded = 0x08000000,
	RF_HasExternalPackage = 0x10000000,
	RF_AllocatedInSharedPage = 0x80000000,
};
ENUM_CLASS_FLAGS(EObjectFlags);

// The flags that a saved package keeps for its objects.
#define RF_Load ((EObjectFlags)(RF_Public | RF_Standalone | RF_Transactional | RF_ClassDefaultObject | RF_ArchetypeObject | RF_DefaultSubObject | RF_TextExportTransient | RF_InheritableComponentTemplate | RF_DuplicateTransient | RF_NonPIEDuplicateTransient))

enum class EInternalObjectFlags : uint32
{
	None = 0,
	Garbage = 1 << 21,
	Unreachable = 1 << 28,
	RootSet = 1 << 30,
};
ENUM_CLASS_FLAGS(EInternalObjectFlags);

enum ELoadFlags : uint32
{
	LOAD_None = 0x00000000,
	LOAD_Async = 0x00000001,
	LOAD_NoWarn = 0x00000002,
	LOAD_EditorOnly = 0x00000004,
	LOAD_Quiet = 0x00002000,
};

enum EPackageFlags : uint32
{
	PKG_None = 0x00000000,
	PKG_NewlyCreated = 0x00000001,
	PKG_ClientOptional = 0x00000002,
	PKG_ServerSideOnly = 0x00000004,
	PKG_CompiledIn = 0x00000010,
	PKG_ForDiffing = 0x00000020,
	PKG_EditorOnly = 0x00000040,
	PKG_Developer = 0x00000080,
	PKG_UncookedOnly = 0x00000100,
	PKG_Cooked = 0x00000200,
	PKG_ContainsNoAsset = 0x00000400,
	PKG_ContainsMap = 0x00020000,
	PKG_ContainsScript = 0x00200000,
	PKG_PlayInEditor = 0x00100000,
};
ENUM_CLASS_FLAGS(EPackageFlags);

#define UCLASS(...)
#define UINTERFACE(...)
#define USTRUCT(...)
#define UENUM(...)
#define UPROPERTY(...)
#define UFUNCTION(...)
#define UMETA(...)
#define GENERATED_BODY(...)
#define GENERATED_USTRUCT_BODY(...)
#define GENERATED_UINTERFACE_BODY(...)
#define GENERATED_IINTERFACE_BODY(...)

class UClass;
class UObject;
class FArchive;

enum EClassFlags : uint32
{
	CLASS_None = 0x00000000u,
	CLASS_Abstract = 0x00000001u,
	CLASS_Transient = 0x00000008u,
	CLASS_Native = 0x00000080u,
	CLASS_MinimalAPI = 0x00080000u,
	CLASS_Intrinsic = 0x10000000u,
};
ENUM_CLASS_FLAGS(EClassFlags);

enum EClassCastFlags : uint64
{
	CASTCLASS_None = 0x0000000000000000,
};
ENUM_CLASS_FLAGS(EClassCastFlags);

namespace UE::Headless::Private
{
	struct FObjectAccess;
	using FConstructObjectFunction = UObject* (*)();
}

// The class plumbing that reflection generates for an engine class: its UClass, the Super and ThisClass
// aliases, its flags and package. The object world constructs objects through its access struct.
#define DECLARE_CLASS(TClass, TSuperClass, TStaticFlags, TStaticCastFlags, TPackage, TRequiredAPI) \
private: \
	TClass& operator=(TClass&&); \
	TClass& operator=(const TClass&); \
	TRequiredAPI static UClass* GetPrivateStaticClass(); \
	friend struct ::UE::Headless::Private::FObjectAccess; \
\
public: \
	static constexpr EClassFlags StaticClassFlags = EClassFlags(TStaticFlags); \
	typedef TSuperClass Super; \
	typedef TClass ThisClass; \
	inline static UClass* StaticClass() \
	{ \
		return GetPrivateStaticClass(); \
	} \
	inline static const TCHAR* StaticPackage() \
	{ \
		return TPackage; \
	} \
	inline static EClassCastFlags StaticClassCastFlags() \
	{ \
		return TStaticCastFlags; \
	}
