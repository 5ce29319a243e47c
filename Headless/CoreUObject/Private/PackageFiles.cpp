#include "Headless/PackageFiles.h"

#include "CoreGlobals.h"
#include "Headless/ObjectRegistry.h"
#include "Headless/PackageFileReader.h"
#include "Headless/PackageFileStore.h"
#include "Headless/PackageFileWriter.h"
#include "Headless/StringUtils.h"
#include "ObjectWorld.h"
#include "UObject/Class.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UObjectHash.h"

#include <map>
#include <set>

namespace
{
	using UE::Headless::FPackageDocument;
	using UE::Headless::FPackageObjectCodec;
	using UE::Headless::FPackageValue;

	std::map<std::u16string, FPackageObjectCodec>& Codecs()
	{
		static std::map<std::u16string, FPackageObjectCodec> Registered;
		return Registered;
	}

	const FPackageObjectCodec* FindCodec(const FString& ClassName)
	{
		const auto Found = Codecs().find(std::u16string(*ClassName));
		return Found == Codecs().end() ? nullptr : &Found->second;
	}

	struct FFlagName
	{
		EObjectFlags Flag;
		const TCHAR* Name;
	};

	constexpr FFlagName SavedFlags[] = {
		{ RF_Public, TEXT("RF_Public") },
		{ RF_Standalone, TEXT("RF_Standalone") },
		{ RF_Transactional, TEXT("RF_Transactional") },
	};

	// The packages whose files are being read now.
	std::set<const UPackage*>& PackagesBeingRead()
	{
		static std::set<const UPackage*> Reading;
		return Reading;
	}

	// What is left out of a file: transient objects and whatever lives inside one, whose outer is not saved.
	bool IsInsideTransient(const UObject& Object, const UPackage& Package)
	{
		for (const UObject* Within = &Object; Within && Within != &Package; Within = Within->GetOuter())
		{
			if (Within->HasAnyFlags(RF_Transient))
			{
				return true;
			}
		}
		return false;
	}

	// One entry of the "objects" list, checked before any object is made so that a bad file creates nothing.
	struct FObjectEntry
	{
		FString Name;
		const FPackageObjectCodec* Codec = nullptr;
		FString OuterPath;
		EObjectFlags Flags = RF_WasLoaded | RF_LoadCompleted;
	};

	FObjectEntry ReadObjectEntry(const FPackageValue& Entry)
	{
		FObjectEntry Parsed;
		const FPackageValue Name = Entry.Member("name");
		Parsed.Name = Name.AsString();
		if (Parsed.Name.IsEmpty())
		{
			Name.Fail(TEXT("is empty"));
		}
		const FPackageValue Class = Entry.Member("class");
		const FString ClassName = Class.AsString();
		Parsed.Codec = FindCodec(ClassName);
		if (!Parsed.Codec)
		{
			Entry.Fail(FString::Printf(TEXT("has the unknown class '%s'"), *ClassName));
		}
		if (Entry.HasMember("outer"))
		{
			const FPackageValue Outer = Entry.Member("outer");
			Parsed.OuterPath = Outer.AsString();
		}
		if (Entry.HasMember("flags"))
		{
			const FPackageValue Flags = Entry.Member("flags");
			for (const FPackageValue& Flag : Flags.Elements())
			{
				const FString FlagName = Flag.AsString();
				const FFlagName* Known = std::find_if(std::begin(SavedFlags), std::end(SavedFlags), [&FlagName](const FFlagName& Saved) { return FlagName == Saved.Name; });
				if (Known == std::end(SavedFlags))
				{
					Flag.Fail(FString::Printf(TEXT("is not a flag that package files keep: '%s'"), *FlagName));
				}
				else
				{
					Parsed.Flags |= Known->Flag;
				}
			}
		}
		const FPackageValue Properties = Entry.Member("properties");
		if (!Properties.IsObject())
		{
			Properties.Fail(TEXT("is not an object"));
		}
		return Parsed;
	}
}

namespace UE::Headless
{
	void RegisterPackageObjectCodec(const TCHAR* ClassName, const FPackageObjectCodec& Codec)
	{
		Codecs()[std::u16string(ClassName)] = Codec;
	}

	bool WritePackageFile(UPackage& Package, const FString& Filename, FString& OutError)
	{
		// Every object is known to be saveable before the file is touched.
		TArray<UObject*> Inner;
		GetObjectsWithOuter(&Package, Inner, true);
		TArray<UObject*> Saved;
		for (UObject* Object : Inner)
		{
			if (IsInsideTransient(*Object, Package))
			{
				continue;
			}
			if (!FindCodec(Object->GetClass()->GetName()))
			{
				OutError = FString::Printf(TEXT("cannot save '%s': objects of class %s are not saved by this build"), *Object->GetPathName(),
					*Object->GetClass()->GetName());
				return false;
			}
			Saved.Add(Object);
		}

		FSafeFileWriter Output;
		if (!Output.Open(Filename, OutError))
		{
			return false;
		}
		FPackageFileWriter Writer(Output);
		Writer.BeginDocument(Package.GetName());
		for (UObject* Object : Saved)
		{
			Writer.BeginObjectEntry();
			Writer.Key("name").String(Object->GetName());
			Writer.Key("class").String(Object->GetClass()->GetName());
			Writer.Key("outer").String(Object->GetOuter() == &Package ? FString() : Object->GetOuter()->GetPathName(&Package));
			Writer.Key("flags").BeginArray();
			for (const FFlagName& Flag : SavedFlags)
			{
				if (Object->HasAnyFlags(Flag.Flag))
				{
					Writer.String(Flag.Name);
				}
			}
			Writer.EndArray();
			Writer.Key("properties").BeginObject();
			FindCodec(Object->GetClass()->GetName())->Write(*Object, Writer);
			Writer.EndObject();
			Writer.EndObjectEntry();
		}
		Writer.EndDocument();
		return Output.Commit(OutError);
	}

	bool ReadPackageFile(UPackage& Package, const FString& Filename, FString& OutError)
	{
		// A reference to an object that its own package does not hold asks to load that package again while it
		// is being read; it gets the package as it is, as the engine's loader does, rather than a second read
		// that asks again, without end.
		if (PackagesBeingRead().count(&Package))
		{
			return true;
		}
		FPackageDocument Document;
		if (!Document.Load(Filename, OutError))
		{
			return false;
		}
		const FPackageValue Root = Document.Root();
		const FPackageValue Objects = Root.Member("objects");
		TArray<FObjectEntry> Entries;
		for (const FPackageValue& Entry : Objects.Elements())
		{
			Entries.Add(ReadObjectEntry(Entry));
		}
		if (Document.HasFault())
		{
			OutError = Document.DescribeFault();
			return false;
		}

		// Every object exists before any reads its properties, as the engine creates a package's exports before
		// serializing them: a reference to an object later in the same package is then found in memory.
		const bool bWasLoading = GIsEditorLoadingPackage;
		GIsEditorLoadingPackage = true;
		PackagesBeingRead().insert(&Package);
		TArray<UObject*> Created;
		for (const FPackageValue& Entry : Objects.Elements())
		{
			const FObjectEntry& Parsed = Entries[(int32)Created.Num()];
			UObject* Outer = Parsed.OuterPath.IsEmpty() ? &Package
														: StaticFindObject(UObject::StaticClass(), nullptr, Package.GetName() + TEXT(".") + Parsed.OuterPath);
			if (!Outer)
			{
				Entry.Fail(FString::Printf(TEXT("has an outer that the package does not hold before it: '%s'"), *Parsed.OuterPath));
				break;
			}
			Created.Add(Private::ConstructObjectInternal(Parsed.Codec->StaticClass(), Outer, FName(Parsed.Name), Parsed.Flags));
		}
		int32 Index = 0;
		for (const FPackageValue& Entry : Objects.Elements())
		{
			if (Document.HasFault())
			{
				break;
			}
			const FPackageValue Properties = Entry.Member("properties");
			Entries[Index].Codec->Read(*Created[Index], Properties);
			++Index;
		}
		GIsEditorLoadingPackage = bWasLoading;
		PackagesBeingRead().erase(&Package);

		if (Document.HasFault())
		{
			OutError = Document.DescribeFault();
			for (UObject* Object : Created)
			{
				Object->ClearFlags(RF_Public | RF_Standalone);
				Object->MarkAsGarbage();
			}
			return false;
		}
		for (UObject* Object : Created)
		{
			Object->PostLoad();
		}
		return true;
	}

	bool ReadPackageFileAssets(const FString& Filename, TArray<FPackageFileAsset>& OutAssets, FString& OutError)
	{
		OutAssets.Reset();
		FPackageDocument Document;
		if (!Document.Load(Filename, OutError))
		{
			return false;
		}
		const FPackageValue Root = Document.Root();
		const FPackageValue Objects = Root.Member("objects");
		for (const FPackageValue& Entry : Objects.Elements())
		{
			const FObjectEntry Parsed = ReadObjectEntry(Entry);
			const FPackageValue Class = Entry.Member("class");
			if (Parsed.OuterPath.IsEmpty())
			{
				OutAssets.Add(FPackageFileAsset{ Parsed.Name, Class.AsString() });
			}
		}
		if (Document.HasFault())
		{
			OutError = Document.DescribeFault();
			OutAssets.Reset();
			return false;
		}
		return true;
	}
}
