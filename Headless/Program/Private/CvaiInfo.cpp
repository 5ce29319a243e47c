#include "CvaiCommands.h"
#include "CvaiEditorSession.h"
#include "CvaiMeshLookup.h"

#include <nlohmann/json.hpp>
#include <sol/sol.hpp>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace UE::Headless::Cvai
{
	namespace
	{
		constexpr const char* Help = "Prints the readback of one static mesh, as nanite_assembly_info(PATH) returns it: a readable summary, or with\n"
			"--json the result table as JSON. PATH is completed as the verb completes it (SM_Rock, Meshes/SM_Rock,\n"
			"/Game/Meshes/SM_Rock, /Game/Meshes/SM_Rock.SM_Rock). When the package file exists but cannot be read, the\n"
			"summary says why instead of \"not found\".\n";

		constexpr const char* ExitStatus = "Exit status: 0 when a static mesh was read back, 1 when none was found or its file cannot be read, 2 for a\n"
			"usage error (including a folder without a .uproject), 3 when another cvai process kept the project past\n"
			"--lock-timeout, 4 when memory ran out.\n";

		constexpr FOption JsonOption{ "--json", nullptr, "print the result table as JSON instead of the summary" };

		using FJson = nlohmann::ordered_json;


		// Keys of the readback in the order the verb writes them; any other key follows in name order.
		const std::vector<std::string> KeyOrder = { "ok", "asset", "object_path", "nanite_enabled", "nanite_settings_enabled", "is_assembly",
			"assembly_data_valid", "part_count", "node_count", "material_slot_count", "parts", "nodes", "nodes_truncated", "compiling",
			"render_data_available", "valid_nanite_data", "assemblies_supported", "index", "part", "part_index", "mesh", "location", "rotation", "scale",
			"transform_space", "material_remap", "pitch", "yaw", "roll", "x", "y", "z" };

		FJson ToJson(lua_State* L, int Index)
		{
			Index = lua_absindex(L, Index);
			switch (lua_type(L, Index))
			{
			case LUA_TBOOLEAN:
				return FJson(lua_toboolean(L, Index) != 0);
			case LUA_TNUMBER:
				return lua_isinteger(L, Index) ? FJson((long long)lua_tointeger(L, Index)) : FJson((double)lua_tonumber(L, Index));
			case LUA_TSTRING:
				return FJson(std::string(lua_tostring(L, Index)));
			case LUA_TTABLE:
				break;
			default:
				return FJson(nullptr);
			}
			std::vector<std::string> Keys;
			bool bSequence = true;
			lua_Integer Count = 0;
			lua_pushnil(L);
			while (lua_next(L, Index) != 0)
			{
				if (lua_type(L, -2) == LUA_TSTRING)
				{
					Keys.push_back(lua_tostring(L, -2));
					bSequence = false;
				}
				else
				{
					++Count;
				}
				lua_pop(L, 1);
			}
			if (bSequence)
			{
				FJson Array = FJson::array();
				for (lua_Integer Position = 1; Position <= Count; ++Position)
				{
					lua_rawgeti(L, Index, Position);
					Array.push_back(ToJson(L, -1));
					lua_pop(L, 1);
				}
				return Array;
			}
			std::sort(Keys.begin(), Keys.end(), [](const std::string& A, const std::string& B)
			{
				const auto RankA = std::find(KeyOrder.begin(), KeyOrder.end(), A) - KeyOrder.begin();
				const auto RankB = std::find(KeyOrder.begin(), KeyOrder.end(), B) - KeyOrder.begin();
				return RankA != RankB ? RankA < RankB : A < B;
			});
			FJson Object = FJson::object();
			for (const std::string& Key : Keys)
			{
				lua_getfield(L, Index, Key.c_str());
				Object[Key] = ToJson(L, -1);
				lua_pop(L, 1);
			}
			return Object;
		}

		std::string Number(const FJson& Value)
		{
			char Buffer[64];
			std::snprintf(Buffer, sizeof(Buffer), "%g", Value.get<double>());
			return Buffer;
		}

		std::string Triple(const FJson& Value, const char* A, const char* B, const char* C)
		{
			return "(" + Number(Value[A]) + ", " + Number(Value[B]) + ", " + Number(Value[C]) + ")";
		}

		const char* YesNo(const FJson& Value)
		{
			return Value.get<bool>() ? "yes" : "no";
		}

		void PrintSummary(const FJson& Result)
		{
			std::printf("%s\n", Result["object_path"].get<std::string>().c_str());
			std::printf("  Nanite enabled: %s (stored setting: %s)   assembly: %s   assembly data valid: %s\n", YesNo(Result["nanite_enabled"]),
				YesNo(Result["nanite_settings_enabled"]), YesNo(Result["is_assembly"]), YesNo(Result["assembly_data_valid"]));
			std::printf("  parts: %lld   nodes: %lld   material slots: %lld\n", Result["part_count"].get<long long>(), Result["node_count"].get<long long>(),
				Result["material_slot_count"].get<long long>());
			for (const FJson& Part : Result["parts"])
			{
				std::string Remap;
				for (const FJson& Entry : Part["material_remap"])
				{
					Remap += (Remap.empty() ? "" : ", ") + std::to_string(Entry.get<long long>());
				}
				std::printf("  part %lld: %s   nodes: %lld   material remap: [%s]\n", Part["index"].get<long long>() + 1, Part["mesh"].get<std::string>().c_str(),
					Part["node_count"].get<long long>(), Remap.c_str());
			}
			const FJson& Nodes = Result["nodes"];
			if (!Nodes.empty())
			{
				std::printf("  nodes%s:\n", Result["nodes_truncated"].get<bool>() ? " (the first 256)" : "");
			}
			for (size_t Index = 0; Index < Nodes.size(); ++Index)
			{
				const FJson& Node = Nodes[Index];
				std::printf("    %zu: part %lld   location %s   rotation %s   scale %s   %s\n", Index + 1, Node["part"].get<long long>(),
					Triple(Node["location"], "x", "y", "z").c_str(), Triple(Node["rotation"], "pitch", "yaw", "roll").c_str(),
					Triple(Node["scale"], "x", "y", "z").c_str(), Node["transform_space"].get<std::string>().c_str());
			}
			std::printf("  render data: %s   valid Nanite data: %s   compiling: %s   assemblies supported: %s\n", YesNo(Result["render_data_available"]),
				YesNo(Result["valid_nanite_data"]), YesNo(Result["compiling"]), YesNo(Result["assemblies_supported"]));
		}

		int RunInfo(const FCommandLine& CommandLine)
		{
			FEditorSession Editor(CommandLine);
			if (const int Exit = Editor.Open(); Exit != ExitOk)
			{
				return Exit;
			}
			const std::string& Path = CommandLine.Positionals[0];
			lua_State* L = Editor.GetLuaSession().GetLua().lua_state();
			lua_getglobal(L, "nanite_assembly_info");
			lua_pushlstring(L, Path.data(), Path.size());
			if (lua_pcall(L, 1, 1, 0) != LUA_OK)
			{
				std::fprintf(stderr, "cvai: %s\n", lua_tostring(L, -1));
				return ExitFailure;
			}
			const FJson Result = ToJson(L, -1);
			const bool bOk = Result.value("ok", false);
			if (CommandLine.Has(JsonOption.Name))
			{
				// The table says what went wrong itself.
				std::printf("%s\n", Result.dump(2).c_str());
			}
			else if (bOk)
			{
				PrintSummary(Result);
			}
			else
			{
				const std::string Fault = DescribePackageLoadFault(Path);
				std::fprintf(stderr, "cvai: %s\n", Fault.empty() ? Result.value("error", std::string()).c_str() : Fault.c_str());
			}
			return bOk ? ExitOk : ExitFailure;
		}
	}

	const FCommand InfoCommand{ .Run = &RunInfo,
		.Syntax = { .Name = "info", .Summary = "print the Nanite Assembly readback of a static mesh", .Description = Help, .ExitStatus = ExitStatus,
			.Options = { ProjectOption, JsonOption, Unlisted(VerboseOption) },
			// The verb completes any text as a path, so "-x" is looked up rather than refused.
			.Positionals = { .Names = { "PATH" }, .MinCount = 1, .DashedWord = EDashedWord::ValueUnlessDoubleDash,
				.MissingMessage = "info needs the path of a static mesh", .ExtraMessage = "info takes one path" } } };
}
