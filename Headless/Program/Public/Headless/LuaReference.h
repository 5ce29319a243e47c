// Harness-only: the reference of everything a cvai script can call, the module's verbs and the harness's
// "headless" table, in one shape, and the three ways cvai docs writes it.
#pragma once

#include <string>
#include <vector>

namespace UE::Headless
{
	struct FLuaArgumentReference
	{
		std::string Name;
		// In the Lua language server's notation ("string", "boolean", "table", "any", a table's name).
		std::string LuaType;
		bool bOptional = false;
		std::string Meaning;
	};

	struct FLuaReturnReference
	{
		std::string LuaType;
		std::string Meaning;
	};

	struct FLuaFunctionReference
	{
		// As a script calls it: "nanite_assembly_info", "headless.undo".
		std::string Name;
		std::vector<FLuaArgumentReference> Arguments;
		std::vector<FLuaReturnReference> Returns;
		std::string Description;

		// "headless.fail_next(operation, reason?, skipped_calls?)".
		std::string Signature() const;
	};

	struct FLuaFieldReference
	{
		std::string Name;
		std::string LuaType;
		// Not in every table of its kind (or, in an argument, one the script may leave out).
		bool bOptional = false;
		std::string Meaning;
		// When the field is there, or its default; empty when it always is.
		std::string When;
	};

	struct FLuaTableReference
	{
		std::string Name;
		std::string Description;
		std::vector<FLuaFieldReference> Fields;
	};

	struct FLuaReferenceSection
	{
		std::string Title;
		std::string Introduction;
		std::vector<FLuaFunctionReference> Functions;
		std::vector<FLuaTableReference> Tables;
	};

	// The module's verbs, then the headless table.
	std::vector<FLuaReferenceSection> GetLuaReference();

	// For a terminal: each function with its arguments, results and tables, indented.
	std::string FormatLuaReferenceText(const std::vector<FLuaReferenceSection>& Sections);

	// The README's reference section, headings from level three down.
	std::string FormatLuaReferenceMarkdown(const std::vector<FLuaReferenceSection>& Sections);

	// A definition file of the Lua language server (---@meta): a class per table, a stub per function.
	std::string FormatLuaLanguageServerDefinitions(const std::vector<FLuaReferenceSection>& Sections);
}
