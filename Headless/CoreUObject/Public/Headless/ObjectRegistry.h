// Harness-only access to the object world: class registration, look-ups that include garbage, flag names.
#pragma once

#include "Containers/StringView.h"
#include "UObject/Class.h"

namespace UE::Headless
{
	COREUOBJECT_API UClass* RegisterClass(const TCHAR* ClassName, const TCHAR* PackageName, UClass* SuperClass, UClass::FConstructFunction Construct,
		EClassFlags Flags);

	template <typename T>
	UClass* GetSuperClassOf()
	{
		return T::Super::StaticClass();
	}

	// The newest object at that full path, garbage or not; null when none was ever created there.
	COREUOBJECT_API UObject* FindObjectIncludingGarbage(FStringView PathName);

	// Forgets every object but the rooted ones and the classes, as a new editor process starts without them.
	COREUOBJECT_API void ResetObjectWorld();

	// The engine's names of the flags that are set, in bit order ("RF_Public", "RF_Standalone", ...).
	COREUOBJECT_API TArray<FString> DescribeObjectFlags(EObjectFlags Flags);

	namespace Private
	{
		// The object world's own access to an object's base fields.
		struct FObjectAccess
		{
			static void Initialize(UObjectBase& Object, UClass* Class, FName Name, UObject* Outer, EObjectFlags Flags);
			static void InitializeClass(UClass& Class, UClass* SuperClass, UClass::FConstructFunction Construct, EClassFlags Flags);
		};
	}
}

// Defines StaticClass() and the construction function of a class declared with DECLARE_HEADLESS_CLASS.
#define IMPLEMENT_HEADLESS_CLASS(TClass, TClassName, TPackageName, TClassFlags) \
	UObject* TClass::HeadlessConstruct() \
	{ \
		return new TClass(); \
	} \
	UClass* TClass::StaticClass() \
	{ \
		static UClass* Class = ::UE::Headless::RegisterClass(TEXT(TClassName), TEXT(TPackageName), \
			::UE::Headless::GetSuperClassOf<TClass>(), &TClass::HeadlessConstruct, (EClassFlags)(TClassFlags)); \
		return Class; \
	}
