#include "Headless/AssemblyViewPage.h"

#include "Headless/AssemblyViewScripts.h"
#include "Headless/Base64.h"
#include "Headless/StringUtils.h"

#include <nlohmann/json.hpp>

#include <map>

namespace UE::Headless
{
	namespace
	{
		// Hues far enough apart to tell every part from its neighbours in the list, and from the grey ground.
		constexpr const char* Palette[] = { "#3687d9", "#d98836", "#36b336", "#d93636", "#8736d9", "#d9cb36", "#36c8d9", "#d936a3", "#87d936",
			"#4c4cd9" };
		constexpr int32 PaletteSize = (int32)(sizeof(Palette) / sizeof(Palette[0]));

		std::string EscapeHtml(const std::string& Text)
		{
			std::string Escaped;
			Escaped.reserve(Text.size());
			for (const char Char : Text)
			{
				switch (Char)
				{
				case '&': Escaped += "&amp;"; break;
				case '<': Escaped += "&lt;"; break;
				case '>': Escaped += "&gt;"; break;
				case '"': Escaped += "&quot;"; break;
				case '\'': Escaped += "&#39;"; break;
				default: Escaped += Char; break;
				}
			}
			return Escaped;
		}

		std::string Counted(int32 Count, const char* Noun)
		{
			return std::to_string(Count) + " " + Noun + (Count == 1 ? "" : "s");
		}

		std::string MakeLegend(const FAssemblyView& View)
		{
			std::string Legend = "<h1>" + EscapeHtml(ToUtf8(View.MeshPath)) + "</h1>\n";
			Legend += View.bIsAssembly ? "<p>" + Counted((int32)View.Parts.size(), "part") + ", " + Counted(View.NumNodes, "node") + "</p>\n"
									   : std::string("<p>a static mesh, not an assembly</p>\n");
			Legend += "<ul>\n";
			for (size_t Index = 0; Index < View.Parts.size(); ++Index)
			{
				const FViewPart& Part = View.Parts[Index];
				Legend += "<li><span class=\"swatch\" style=\"background:" + GetViewPartColour((int32)Index) + "\"></span><span class=\"path\">"
					+ EscapeHtml(ToUtf8(Part.MeshPath)) + "</span><span class=\"count\">" + Counted(Part.NumInstances(), "instance")
					+ (Part.bLoaded ? "" : ", not drawn: the mesh cannot be loaded") + "</span></li>\n";
			}
			return Legend + "</ul>";
		}

		template <typename FNumber>
		std::string Encoded(const std::vector<FNumber>& Numbers)
		{
			return EncodeBase64(Numbers.data(), Numbers.size() * sizeof(FNumber));
		}

		// JSON inside a script element: a '<' (only ever inside a string) is escaped, so that no "</script" or "<!--"
		// in a mesh's name can end the element early.
		std::string ToScriptJson(const nlohmann::json& Json)
		{
			std::string Text = Json.dump();
			std::string Escaped;
			Escaped.reserve(Text.size());
			for (const char Char : Text)
			{
				if (Char == '<')
				{
					Escaped += "\\u003c";
				}
				else
				{
					Escaped += Char;
				}
			}
			return Escaped;
		}

		std::string MakeSceneJson(const FAssemblyView& View)
		{
			nlohmann::json Parts = nlohmann::json::array();
			for (size_t Index = 0; Index < View.Parts.size(); ++Index)
			{
				const FViewPart& Part = View.Parts[Index];
				Parts.push_back({ { "colour", GetViewPartColour((int32)Index) }, { "positions", Encoded(Part.Positions) }, { "normals", Encoded(Part.Normals) },
					{ "indices", Encoded(Part.Indices) }, { "instances", Encoded(Part.Instances) } });
			}
			nlohmann::json Bounds = nullptr;
			if (View.HasBounds())
			{
				Bounds = { { "min", { View.BoundsMin.X, View.BoundsMin.Y, View.BoundsMin.Z } },
					{ "max", { View.BoundsMax.X, View.BoundsMax.Y, View.BoundsMax.Z } } };
			}
			return ToScriptJson({ { "parts", Parts }, { "bounds", Bounds } });
		}

		std::string MakeImportMap()
		{
			nlohmann::json Imports = nlohmann::json::object();
			for (const FViewerModule& Module : ViewerModules)
			{
				Imports[Module.Specifier] = "data:text/javascript;base64," + EncodeBase64(Module.Source.data(), Module.Source.size());
			}
			return ToScriptJson({ { "imports", Imports } });
		}

		// Each {{name}} of the template, replaced by its text.
		std::string FillTemplate(std::string_view Template, const std::map<std::string, std::string>& Texts)
		{
			std::string Page;
			size_t Done = 0;
			for (size_t Open = Template.find("{{"); Open != std::string_view::npos; Open = Template.find("{{", Done))
			{
				const size_t Close = Template.find("}}", Open);
				const auto Found = Close == std::string_view::npos ? Texts.end() : Texts.find(std::string(Template.substr(Open + 2, Close - Open - 2)));
				if (Found == Texts.end())
				{
					Page += Template.substr(Done, Open + 2 - Done);
					Done = Open + 2;
					continue;
				}
				Page += Template.substr(Done, Open - Done);
				Page += Found->second;
				Done = Close + 2;
			}
			return Page + std::string(Template.substr(Done));
		}
	}

	std::string GetViewPartColour(int32 PartIndex)
	{
		return Palette[PartIndex % PaletteSize];
	}

	std::string MakeAssemblyViewPage(const FAssemblyView& View)
	{
		return FillTemplate(AssemblyViewTemplate, { { "title", EscapeHtml(ToUtf8(View.MeshPath)) }, { "importmap", MakeImportMap() },
			{ "legend", MakeLegend(View) }, { "scene", MakeSceneJson(View) } });
	}
}
