#include "Headless/LuaReference.h"

namespace UE::Headless
{
	namespace
	{
		std::string JoinReturnTypes(const FLuaFunctionReference& Function)
		{
			std::string Types;
			for (const FLuaReturnReference& Return : Function.Returns)
			{
				Types += (Types.empty() ? "" : ", ") + Return.LuaType;
			}
			return Types;
		}

		// A table cell: the bar would end it.
		std::string Cell(const std::string& Text)
		{
			std::string Escaped;
			for (const char Character : Text)
			{
				Escaped += Character == '|' ? std::string("\\|") : std::string(1, Character);
			}
			return Escaped;
		}

		// Text in a Lua comment line, where a line break would end the comment.
		std::string CommentText(std::string Text)
		{
			for (char& Character : Text)
			{
				Character = Character == '\n' ? ' ' : Character;
			}
			return Text;
		}
	}

	std::string FormatLuaReferenceText(const std::vector<FLuaReferenceSection>& Sections)
	{
		std::string Text;
		for (const FLuaReferenceSection& Section : Sections)
		{
			Text += (Text.empty() ? "" : "\n") + Section.Title + "\n\n" + Section.Introduction + "\n";
			for (const FLuaFunctionReference& Function : Section.Functions)
			{
				Text += "\n" + Function.Signature();
				Text += Function.Returns.empty() ? std::string("\n") : " -> " + JoinReturnTypes(Function) + "\n";
				Text += "    " + Function.Description + "\n";
				for (const FLuaArgumentReference& Argument : Function.Arguments)
				{
					Text += "    " + Argument.Name + (Argument.bOptional ? " (optional) " : " ") + Argument.LuaType + ": " + Argument.Meaning + "\n";
				}
				for (const FLuaReturnReference& Return : Function.Returns)
				{
					Text += "    returns " + Return.LuaType + ": " + Return.Meaning + "\n";
				}
			}
			for (const FLuaTableReference& Table : Section.Tables)
			{
				Text += "\n" + Table.Name + "\n    " + Table.Description + "\n";
				for (const FLuaFieldReference& Field : Table.Fields)
				{
					Text += "    " + Field.Name + " " + Field.LuaType + (Field.When.empty() ? "" : " (" + Field.When + ")") + ": " + Field.Meaning + "\n";
				}
			}
		}
		return Text;
	}

	std::string FormatLuaReferenceMarkdown(const std::vector<FLuaReferenceSection>& Sections)
	{
		std::string Text;
		for (const FLuaReferenceSection& Section : Sections)
		{
			Text += (Text.empty() ? "" : "\n") + std::string("### ") + Section.Title + "\n\n" + Section.Introduction + "\n";
			for (const FLuaFunctionReference& Function : Section.Functions)
			{
				Text += "\n#### `" + Function.Signature() + "`\n\n" + Function.Description + "\n";
				if (!Function.Arguments.empty())
				{
					Text += "\n| argument | type | meaning |\n|---|---|---|\n";
					for (const FLuaArgumentReference& Argument : Function.Arguments)
					{
						Text += "| `" + Argument.Name + "`" + (Argument.bOptional ? " (optional)" : "") + " | `" + Cell(Argument.LuaType) + "` | " +
							Cell(Argument.Meaning) + " |\n";
					}
				}
				if (!Function.Returns.empty())
				{
					Text += "\nReturns:\n\n";
					for (const FLuaReturnReference& Return : Function.Returns)
					{
						Text += "- `" + Return.LuaType + "`: " + Return.Meaning + "\n";
					}
				}
			}
			for (const FLuaTableReference& Table : Section.Tables)
			{
				Text += "\n#### `" + Table.Name + "`\n\n" + Table.Description + "\n\n| field | type | when | meaning |\n|---|---|---|---|\n";
				for (const FLuaFieldReference& Field : Table.Fields)
				{
					Text += "| `" + Field.Name + "` | `" + Cell(Field.LuaType) + "` | " + (Field.When.empty() ? "always" : Cell(Field.When)) + " | " +
						Cell(Field.Meaning) + " |\n";
				}
			}
		}
		return Text;
	}

	std::string FormatLuaLanguageServerDefinitions(const std::vector<FLuaReferenceSection>& Sections)
	{
		std::string Text = "---@meta\n"
						   "-- Definitions of the functions a cvai script can call, for the Lua language server. Written by cvai docs --luals.\n";
		for (const FLuaReferenceSection& Section : Sections)
		{
			Text += "\n-- " + Section.Title + "\n";
			for (const FLuaTableReference& Table : Section.Tables)
			{
				Text += "\n---" + CommentText(Table.Description) + "\n---@class " + Table.Name + "\n";
				for (const FLuaFieldReference& Field : Table.Fields)
				{
					Text += "---@field " + Field.Name + (Field.bOptional ? "? " : " ") + Field.LuaType + " " +
						CommentText(Field.Meaning + (Field.When.empty() ? "" : " (" + Field.When + ")")) + "\n";
				}
			}
			bool bTableDeclared = false;
			for (const FLuaFunctionReference& Function : Section.Functions)
			{
				const size_t Dot = Function.Name.find('.');
				if (Dot != std::string::npos && !bTableDeclared)
				{
					const std::string Owner = Function.Name.substr(0, Dot);
					Text += "\n---@class " + Owner + "\n" + Owner + " = {}\n";
					bTableDeclared = true;
				}
				Text += "\n---" + CommentText(Function.Description) + "\n";
				std::string Names;
				for (const FLuaArgumentReference& Argument : Function.Arguments)
				{
					Text += "---@param " + Argument.Name + (Argument.bOptional ? "? " : " ") + Argument.LuaType + " " + CommentText(Argument.Meaning) + "\n";
					Names += (Names.empty() ? "" : ", ") + Argument.Name;
				}
				for (const FLuaReturnReference& Return : Function.Returns)
				{
					Text += "---@return " + Return.LuaType + " # " + CommentText(Return.Meaning) + "\n";
				}
				Text += "function " + Function.Name + "(" + Names + ") end\n";
			}
		}
		return Text;
	}
}
