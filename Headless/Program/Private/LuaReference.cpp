#include "Headless/LuaReference.h"

#include "Headless/HarnessLuaApi.h"
#include "Headless/StringUtils.h"
#include "Lua/NaniteAssemblyReferenceDocs.h"

namespace UE::Headless
{
	namespace
	{
		using namespace CVAI::NaniteAssembly;

		std::string WhenPresent(const FNaniteAssemblyFieldDoc& Field)
		{
			const std::string Condition = ToUtf8(Field.Condition);
			const auto Joined = [&Condition](const char* Case) { return Condition.empty() ? std::string(Case) : std::string(Case) + "; " + Condition; };
			switch (Field.Presence)
			{
			case ENaniteAssemblyFieldPresence::WhenOk:
				return Joined("when ok = true");
			case ENaniteAssemblyFieldPresence::WhenRefused:
				return Joined("when ok = false");
			case ENaniteAssemblyFieldPresence::Optional:
				return Condition;
			case ENaniteAssemblyFieldPresence::Always:
				break;
			}
			return Condition;
		}

		void AddTables(const TArray<FNaniteAssemblyTableDoc>& Docs, std::vector<FLuaTableReference>& OutTables)
		{
			for (const FNaniteAssemblyTableDoc& Doc : Docs)
			{
				FLuaTableReference& Table = OutTables.emplace_back();
				Table.Name = ToUtf8(Doc.Name);
				Table.Description = ToUtf8(Doc.Description);
				for (const FNaniteAssemblyFieldDoc& FieldDoc : Doc.Fields)
				{
					Table.Fields.push_back({ ToUtf8(FieldDoc.Name), ToUtf8(FieldDoc.LuaType), FieldDoc.Presence != ENaniteAssemblyFieldPresence::Always,
						ToUtf8(FieldDoc.Meaning), WhenPresent(FieldDoc) });
				}
			}
		}

		FLuaReferenceSection GetVerbSection()
		{
			FLuaReferenceSection Section;
			Section.Title = "The module's verbs";
			Section.Introduction = "Every verb returns one table whose first key is ok; a refusal is { ok = false, error = \"...\" } with one message "
								   "that names the place of the fault, and nothing in the project changes. Each call writes one line to the session "
								   "log, beginning \"[OK] \" or \"[FAIL] \". A wrong argument type is a Lua error.";
			for (const FNaniteAssemblyVerbDoc& Verb : GetNaniteAssemblyVerbDocs())
			{
				FLuaFunctionReference& Function = Section.Functions.emplace_back();
				Function.Name = ToUtf8(Verb.Name);
				for (const FNaniteAssemblyArgumentDoc& Argument : Verb.Arguments)
				{
					Function.Arguments.push_back({ ToUtf8(Argument.Name), ToUtf8(Argument.LuaType), false, ToUtf8(Argument.Meaning) });
				}
				Function.Returns.push_back({ ToUtf8(Verb.ResultType), "the result table" });
				Function.Description = ToUtf8(Verb.Description);
			}
			AddTables(GetNaniteAssemblyRequestDocs(), Section.Tables);
			AddTables(GetNaniteAssemblyResultDocs(), Section.Tables);
			return Section;
		}

		FLuaReferenceSection GetHarnessSection()
		{
			FLuaReferenceSection Section;
			Section.Title = "The headless table";
			Section.Introduction = "cvai installs the global table headless into each session it runs, so that scripts drive the editor as a "
								   "person would; it does not exist in the editor. A wrong argument is a Lua error that names the function, the "
								   "argument and the type it must have.";
			for (const FHarnessFunction& Function : GetHarnessFunctions())
			{
				Section.Functions.push_back(Function.Reference);
			}
			Section.Tables = GetHarnessTables();
			return Section;
		}
	}

	std::vector<FLuaReferenceSection> GetLuaReference()
	{
		return { GetVerbSection(), GetHarnessSection() };
	}
}
