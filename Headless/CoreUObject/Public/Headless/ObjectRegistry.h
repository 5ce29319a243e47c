// Harness-only access to the object world: class registration, look-ups that include garbage, flag names.
#pragma once

#include "Containers/StringView.h"
#include "UObject/Class.h"

#include <type_traits>

namespace UE::Headless
{
	COREUOBJECT_API UClass* RegisterClass(const TCHAR* ClassName, const TCHAR* PackageName, UClass* SuperClass, Private::FConstructObjectFunction Construct,
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
			static void InitializeClass(UClass& Class, UClass* SuperClass, FConstructObjectFunction Construct, EClassFlags Flags);
			[[nodiscard]] static FConstructObjectFunction GetConstructFunction(const UClass& Class);

			// A new object of the class, or null for a class that C++ cannot instantiate.
			template <typename T>
			static UObject* Construct()
			{
				if constexpr (std::is_abstract_v<T>)
				{
					return nullptr;
				}
				else
				{
					return new T();
				}
			}
		};
	}
}

// Registers a class declared with DECLARE_CLASS under its engine name (without the U prefix), in the
// package and with the flags that its declaration gives.
#define IMPLEMENT_HEADLESS_CLASS(TClass, TClassName) \
	UClass* TClass::GetPrivateStaticClass() \
	{ \
		static UClass* Class = ::UE::Headless::RegisterClass(TEXT(TClassName), TClass::StaticPackage(), ::UE::Headless::GetSuperClassOf<TClass>(), \
			&::UE::Headless::Private::FObjectAccess::Construct<TClass>, TClass::StaticClassFlags); \
		return Class; \
	}
