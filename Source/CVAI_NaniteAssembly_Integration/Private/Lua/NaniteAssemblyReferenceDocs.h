// The reference of the module's Lua surface, field by field: every verb with its arguments, every table a
// script passes in and every table a verb gives back, each field with its Lua type, its meaning and when it is
// there. The host shows the shorter FLuaFunctionDoc records; editors and the reference pages are made from
// these, and the module's tests hold them equal to the tables the verbs really return.
#pragma once

#include "CoreMinimal.h"

namespace CVAI::NaniteAssembly
{
	// When a field is in its table.
	enum class ENaniteAssemblyFieldPresence : uint8
	{
		// In every table of its kind (in a request: a field the script must give).
		Always,
		// In every result with ok = true.
		WhenOk,
		// In every result with ok = false.
		WhenRefused,
		// Only in the case that the field's Condition names (in a request: a field the script may leave out).
		Optional,
	};

	struct FNaniteAssemblyFieldDoc
	{
		FString Name;
		// In the Lua language server's notation: "boolean", "integer", "number", "string", "integer[]", a table's
		// name ("NaniteAssemblyVector"), or alternatives joined by "|".
		FString LuaType;
		ENaniteAssemblyFieldPresence Presence = ENaniteAssemblyFieldPresence::Always;
		FString Meaning;
		// When the field is there, or its default in a request; may add to Presence ("also on ok = false when ...").
		FString Condition;
	};

	struct FNaniteAssemblyTableDoc
	{
		FString Name;
		FString Description;
		TArray<FNaniteAssemblyFieldDoc> Fields;
	};

	struct FNaniteAssemblyArgumentDoc
	{
		FString Name;
		FString LuaType;
		FString Meaning;
	};

	struct FNaniteAssemblyVerbDoc
	{
		FString Name;
		TArray<FNaniteAssemblyArgumentDoc> Arguments;
		// The name of the result's table.
		FString ResultType;
		FString Description;
	};

	// The three verbs, in the order support, info, build.
	const TArray<FNaniteAssemblyVerbDoc>& GetNaniteAssemblyVerbDocs();

	// The tables a script passes to nanite_assembly_build.
	const TArray<FNaniteAssemblyTableDoc>& GetNaniteAssemblyRequestDocs();

	// The tables the verbs give back, and the tables inside them.
	const TArray<FNaniteAssemblyTableDoc>& GetNaniteAssemblyResultDocs();
}
