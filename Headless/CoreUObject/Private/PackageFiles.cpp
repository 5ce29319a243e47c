#include "Headless/PackageFiles.h"

#include "CoreGlobals.h"
#include "Headless/ObjectRegistry.h"
#include "Headless/StringUtils.h"
#include "Misc/Paths.h"
#include "ObjectWorld.h"
#include "UObject/Class.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UObjectHash.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <unistd.h>

namespace
{
	namespace fs = std::filesystem;
	using FJson = nlohmann::json;

	std::map<std::u16string, UE::Headless::FPackageObjectCodec>& Codecs()
	{
		static std::map<std::u16string, UE::Headless::FPackageObjectCodec> Registered;
		return Registered;
	}

	const UE::Headless::FPackageObjectCodec* FindCodec(const FString& ClassName)
	{
		const auto Found = Codecs().find(std::u16string(*ClassName));
		return Found == Codecs().end() ? nullptr : &Found->second;
	}

	struct FFlagName
	{
		EObjectFlags Flag;
		const char* Name;
	};

	constexpr FFlagName SavedFlags[] = {
		{ RF_Public, "RF_Public" },
		{ RF_Standalone, "RF_Standalone" },
		{ RF_Transactional, "RF_Transactional" },
	};

	bool Fail(FString& OutError, const FString& Filename, const FString& Detail)
	{
		OutError = FString::Printf(TEXT("'%s' is not a valid package file: %s"), *Filename, *Detail);
		return false;
	}

	// The packages whose files are being read now.
	std::set<const UPackage*>& PackagesBeingRead()
	{
		static std::set<const UPackage*> Reading;
		return Reading;
	}

	// Where a new file goes: every existing folder along the way is reused whatever its letter case.
	fs::path ResolveWritePath(const FString& Filename)
	{
		const fs::path Wanted(UE::Headless::ToUtf8(Filename));
		fs::path Result = Wanted.root_path();
		for (const fs::path& Part : Wanted.relative_path())
		{
			const FString Candidate = UE::Headless::FindPathIgnoringCase(UE::Headless::FromUtf8((Result / Part).string()));
			Result = Candidate.IsEmpty() ? Result / Part : fs::path(UE::Headless::ToUtf8(Candidate));
		}
		return Result;
	}
}

namespace UE::Headless
{
	void RegisterPackageObjectCodec(const TCHAR* ClassName, const FPackageObjectCodec& Codec)
	{
		Codecs()[std::u16string(ClassName)] = Codec;
	}

	FString FindPathIgnoringCase(const FString& Path)
	{
		const fs::path Wanted(ToUtf8(Path));
		std::error_code Error;
		if (fs::exists(Wanted, Error))
		{
			return Path;
		}
		fs::path Result = Wanted.root_path();
		for (const fs::path& Part : Wanted.relative_path())
		{
			if (Part == "." || Part == "..")
			{
				Result /= Part;
				continue;
			}
			const fs::path Exact = Result / Part;
			if (fs::exists(Exact, Error))
			{
				Result = Exact;
				continue;
			}
			const FString PartText = FromUtf8(Part.string());
			bool bFound = false;
			for (fs::directory_iterator It(Result.empty() ? fs::path(".") : Result, Error), End; !Error && It != End; It.increment(Error))
			{
				if (FromUtf8(It->path().filename().string()).Equals(PartText, ESearchCase::IgnoreCase))
				{
					Result = It->path();
					bFound = true;
					break;
				}
			}
			if (!bFound)
			{
				return FString();
			}
		}
		return FromUtf8(Result.string());
	}

	bool WritePackageFile(UPackage& Package, const FString& Filename, FString& OutError)
	{
		// The header is laid out one key per line, format and version first; each object is one compact line.
		std::string Text = std::string("{\n\t\"format\": \"") + PackageFileFormatName + "\",\n\t\"version\": " + std::to_string(PackageFileFormatVersion)
			+ ",\n\t\"package\": " + FJson(ToUtf8(Package.GetName())).dump() + ",\n\t\"objects\": [";
		bool bFirstObject = true;

		TArray<UObject*> Inner;
		GetObjectsWithOuter(&Package, Inner, true);
		for (UObject* Object : Inner)
		{
			// What lives inside a transient object is not saved either: its outer is not in the file.
			bool bTransient = false;
			for (const UObject* Within = Object; Within && Within != &Package; Within = Within->GetOuter())
			{
				bTransient |= Within->HasAnyFlags(RF_Transient);
			}
			if (bTransient)
			{
				continue;
			}
			const FPackageObjectCodec* Codec = FindCodec(Object->GetClass()->GetName());
			if (!Codec)
			{
				OutError = FString::Printf(TEXT("cannot save '%s': objects of class %s are not saved by this build"), *Object->GetPathName(),
					*Object->GetClass()->GetName());
				return false;
			}
			nlohmann::ordered_json Entry;
			Entry["name"] = ToUtf8(Object->GetName());
			Entry["class"] = ToUtf8(Object->GetClass()->GetName());
			Entry["outer"] = ToUtf8(Object->GetOuter() == &Package ? FString() : Object->GetOuter()->GetPathName(&Package));
			FJson Flags = FJson::array();
			for (const FFlagName& Flag : SavedFlags)
			{
				if (Object->HasAnyFlags(Flag.Flag))
				{
					Flags.push_back(Flag.Name);
				}
			}
			Entry["flags"] = Flags;
			FJson Properties = FJson::object();
			Codec->Write(*Object, Properties);
			Entry["properties"] = Properties;
			Text += (bFirstObject ? "\n\t\t" : ",\n\t\t") + Entry.dump();
			bFirstObject = false;
		}
		Text += bFirstObject ? "]\n}\n" : "\n\t]\n}\n";

		const fs::path Target = ResolveWritePath(Filename);
		std::error_code Error;
		fs::create_directories(Target.parent_path(), Error);
		if (Error)
		{
			OutError = FString::Printf(TEXT("cannot create the folder of '%s': %s"), *Filename, *FromUtf8(Error.message()));
			return false;
		}
		const fs::path Temporary = Target.string() + ".tmp-" + std::to_string(getpid());
		{
			std::ofstream Out(Temporary, std::ios::binary | std::ios::trunc);
			Out << Text;
			Out.flush();
			if (!Out)
			{
				OutError = FString::Printf(TEXT("cannot write '%s'"), *FromUtf8(Temporary.string()));
				fs::remove(Temporary, Error);
				return false;
			}
		}
		fs::rename(Temporary, Target, Error);
		if (Error)
		{
			OutError = FString::Printf(TEXT("cannot move '%s' into place: %s"), *FromUtf8(Target.string()), *FromUtf8(Error.message()));
			fs::remove(Temporary, Error);
			return false;
		}
		return true;
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
		std::ifstream In(ToUtf8(Filename), std::ios::binary);
		if (!In)
		{
			OutError = FString::Printf(TEXT("cannot open package file '%s'"), *Filename);
			return false;
		}
		std::stringstream Buffer;
		Buffer << In.rdbuf();

		const FJson Document = FJson::parse(Buffer.str(), nullptr, false);
		if (Document.is_discarded())
		{
			return Fail(OutError, Filename, TEXT("it is not a complete JSON document"));
		}
		if (!Document.is_object() || !Document.contains("format") || Document["format"] != PackageFileFormatName)
		{
			return Fail(OutError, Filename, FString::Printf(TEXT("its format is not '%hs'"), PackageFileFormatName));
		}
		if (!Document.contains("version") || !Document["version"].is_number_integer() || Document["version"].get<int64_t>() != PackageFileFormatVersion)
		{
			return Fail(OutError, Filename, FString::Printf(TEXT("its version is not %d"), PackageFileFormatVersion));
		}
		if (!Document.contains("objects") || !Document["objects"].is_array())
		{
			return Fail(OutError, Filename, TEXT("'objects' is not a list"));
		}

		// Every entry is checked before any object is made, so that a bad file creates nothing.
		const FJson& Objects = Document["objects"];
		for (size_t Index = 0; Index < Objects.size(); ++Index)
		{
			const FJson& Entry = Objects[Index];
			const FString Where = FString::Printf(TEXT("objects[%d]"), (int32)Index);
			if (!Entry.is_object() || !Entry.contains("name") || !Entry["name"].is_string() || Entry["name"].get<std::string>().empty())
			{
				return Fail(OutError, Filename, Where + TEXT(" has no name"));
			}
			if (!Entry.contains("class") || !Entry["class"].is_string())
			{
				return Fail(OutError, Filename, Where + TEXT(" has no class"));
			}
			if (!FindCodec(FromUtf8(Entry["class"].get<std::string>())))
			{
				return Fail(OutError, Filename, FString::Printf(TEXT("%s has the unknown class '%s'"), *Where, *FromUtf8(Entry["class"].get<std::string>())));
			}
			if (Entry.contains("outer") && !Entry["outer"].is_string())
			{
				return Fail(OutError, Filename, Where + TEXT(" has an outer that is not a text"));
			}
			if (Entry.contains("flags") && !Entry["flags"].is_array())
			{
				return Fail(OutError, Filename, Where + TEXT(" has flags that are not a list"));
			}
			if (Entry.contains("properties") && !Entry["properties"].is_object())
			{
				return Fail(OutError, Filename, Where + TEXT(" has properties that are not an object"));
			}
		}

		// Every object exists before any reads its properties, as the engine creates a package's exports before
		// serializing them: a reference to an object later in the same package is then found in memory.
		const bool bWasLoading = GIsEditorLoadingPackage;
		GIsEditorLoadingPackage = true;
		PackagesBeingRead().insert(&Package);
		TArray<UObject*> Created;
		bool bOk = true;
		for (size_t Index = 0; bOk && Index < Objects.size(); ++Index)
		{
			const FJson& Entry = Objects[Index];
			const FString ClassName = FromUtf8(Entry["class"].get<std::string>());
			UClass* Class = FindCodec(ClassName)->StaticClass();
			UObject* Outer = &Package;
			const FString OuterPath = Entry.contains("outer") ? FromUtf8(Entry["outer"].get<std::string>()) : FString();
			if (!OuterPath.IsEmpty())
			{
				Outer = StaticFindObject(UObject::StaticClass(), nullptr, Package.GetName() + TEXT(".") + OuterPath);
			}
			if (!Class || !Outer)
			{
				bOk = Fail(OutError, Filename, FString::Printf(TEXT("objects[%d] cannot be placed (class or outer missing)"), (int32)Index));
				break;
			}
			EObjectFlags Flags = RF_WasLoaded | RF_LoadCompleted;
			if (Entry.contains("flags"))
			{
				for (const FJson& FlagName : Entry["flags"])
				{
					for (const FFlagName& Flag : SavedFlags)
					{
						if (FlagName.is_string() && FlagName.get<std::string>() == Flag.Name)
						{
							Flags |= Flag.Flag;
						}
					}
				}
			}
			Created.Add(Private::ConstructObjectInternal(Class, Outer, FName(FromUtf8(Entry["name"].get<std::string>())), Flags));
		}
		for (size_t Index = 0; bOk && Index < Objects.size(); ++Index)
		{
			const FJson& Entry = Objects[Index];
			const FString ClassName = FromUtf8(Entry["class"].get<std::string>());
			UObject* Object = Created[(int32)Index];
			FString CodecError;
			const FJson Empty = FJson::object();
			bool bRead = false;
			try
			{
				bRead = FindCodec(ClassName)->Read(*Object, Entry.contains("properties") ? Entry["properties"] : Empty, CodecError);
			}
			catch (const std::exception& Exception)
			{
				CodecError = FromUtf8(Exception.what());
			}
			if (!bRead)
			{
				bOk = Fail(OutError, Filename, FString::Printf(TEXT("objects[%d] (%s): %s"), (int32)Index, *Object->GetName(), *CodecError));
			}
		}
		GIsEditorLoadingPackage = bWasLoading;
		PackagesBeingRead().erase(&Package);

		if (!bOk)
		{
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
}
