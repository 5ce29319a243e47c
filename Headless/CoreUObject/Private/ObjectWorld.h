// The process-wide object table shared by the CoreUObject sources.
#pragma once

#include "UObject/Object.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace UE::Headless::Private
{
	class FObjectWorld
	{
	public:
		// Never destroyed: objects outlive every library that made them until the process ends.
		static FObjectWorld& Get();

		void Add(UObject* Object);

		// The newest object at the path, skipping garbage unless asked; the path is matched ignoring case.
		UObject* Find(FStringView PathName, bool bIncludeGarbage) const;

		template <typename FunctionType>
		void ForEach(FunctionType&& Function) const
		{
			for (UObject* Object : Objects)
			{
				Function(Object);
			}
		}

		static std::u16string MakeKey(FStringView PathName);

		// Drops every object but the rooted ones and the classes' script packages, as a new editor process
		// would start without them. Dropped objects stay allocated (whoever still points at one may read it)
		// but can no longer be found.
		void DropUnrootedObjects();

	private:
		std::vector<UObject*> Objects;
		std::vector<UObject*> Dropped;
		std::unordered_map<std::u16string, std::vector<UObject*>> ByPath;
	};

	// Creates an object of the class without the engine's checks or fault injection (loading, class set-up).
	UObject* ConstructObjectInternal(UClass* Class, UObject* Outer, FName Name, EObjectFlags Flags);

	// Creates the package object itself, without fault injection.
	UPackage* CreatePackageInternal(const FString& PackageName);
}
