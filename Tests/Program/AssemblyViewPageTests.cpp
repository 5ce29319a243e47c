// The viewer's page as a file: its legend, the scene it carries, and three.js inside it, with nothing that
// reaches for a network. Tests/Cli/view.sh opens it in Chromium.
#include "Headless/AssemblyViewPage.h"
#include "Headless/AssemblyViewScripts.h"
#include "Headless/Base64.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <set>
#include <sstream>

namespace
{
	using namespace UE::Headless;
	using FJson = nlohmann::json;

	FAssemblyView MakeTwoPartView()
	{
		FAssemblyView View;
		View.MeshPath = TEXT("/Game/Odd/SM_<Fence> & \"Gate's\".SM_X");
		View.bIsAssembly = true;
		View.NumNodes = 4;
		FViewPart& Cube = View.Parts.emplace_back();
		Cube.MeshPath = TEXT("/Engine/BasicShapes/Cube.Cube");
		Cube.bLoaded = true;
		Cube.Positions = { 0, 0, 0, 1, 0, 0, 0, 1.5f, -2 };
		Cube.Normals = { 0, 0, 1, 0, 0, 1, 0, 0, 1 };
		Cube.Indices = { 0, 1, 2 };
		Cube.Instances = { 1, 2, 3, 0, 0, 0, 1, 1, 1, 1, -1, 0, 0, 0, 0.5f, 0, 0.75f, 2, 2, 2 };
		FViewPart& Gone = View.Parts.emplace_back();
		Gone.MeshPath = TEXT("/Game/Gone</script>.Gone");
		Gone.Instances = { 0, 0, 0, 0, 0, 0, 1, 1, 1, 1 };
		View.BoundsMin = FVector3f(-1.5f, -0.5f, -1);
		View.BoundsMax = FVector3f(2, 3.5f, 4);
		return View;
	}

	std::vector<std::string> Lines(const std::string& Text)
	{
		std::vector<std::string> Result;
		std::istringstream Stream(Text);
		for (std::string Line; std::getline(Stream, Line);)
		{
			Result.push_back(Line);
		}
		return Result;
	}

	size_t Count(const std::string& Text, const std::string& Word)
	{
		size_t Found = 0;
		for (size_t At = Text.find(Word); At != std::string::npos; At = Text.find(Word, At + 1))
		{
			++Found;
		}
		return Found;
	}

	// The JSON of a script element whose start tag is Start.
	FJson ScriptJson(const std::string& Page, const std::string& Start)
	{
		const size_t Begin = Page.find(Start);
		if (Begin == std::string::npos)
		{
			return nullptr;
		}
		const size_t End = Page.find("</script>", Begin);
		return FJson::parse(Page.substr(Begin + Start.size(), End - Begin - Start.size()), nullptr, false);
	}

	template <typename FNumber>
	std::vector<FNumber> DecodeNumbers(const FJson& Text)
	{
		std::vector<uint8_t> Bytes;
		EXPECT_TRUE(DecodeBase64(Text.get<std::string>(), Bytes));
		std::vector<FNumber> Numbers(Bytes.size() / sizeof(FNumber));
		std::memcpy(Numbers.data(), Bytes.data(), Numbers.size() * sizeof(FNumber));
		return Numbers;
	}
}

TEST(AssemblyViewPage, TheLegendNamesEachPartWithItsColourAndInstances)
{
	const std::string Page = MakeAssemblyViewPage(MakeTwoPartView());
	const std::vector<std::string> PageLines = Lines(Page);
	const auto Has = [&PageLines](const std::string& Line) { return std::find(PageLines.begin(), PageLines.end(), Line) != PageLines.end(); };
	EXPECT_TRUE(Has("<title>/Game/Odd/SM_&lt;Fence&gt; &amp; &quot;Gate&#39;s&quot;.SM_X</title>"));
	EXPECT_TRUE(Has("<h1>/Game/Odd/SM_&lt;Fence&gt; &amp; &quot;Gate&#39;s&quot;.SM_X</h1>"));
	EXPECT_TRUE(Has("<p>2 parts, 4 nodes</p>"));
	EXPECT_TRUE(Has("<li><span class=\"swatch\" style=\"background:" + GetViewPartColour(0)
		+ "\"></span><span class=\"path\">/Engine/BasicShapes/Cube.Cube</span><span class=\"count\">2 instances</span></li>"));
	EXPECT_TRUE(Has("<li><span class=\"swatch\" style=\"background:" + GetViewPartColour(1)
		+ "\"></span><span class=\"path\">/Game/Gone&lt;/script&gt;.Gone</span><span class=\"count\">1 instance, not drawn: the mesh cannot be loaded</span></li>"));
	EXPECT_EQ(Count(Page, "<li>"), 2u);

	FAssemblyView Single = MakeTwoPartView();
	Single.Parts.pop_back();
	Single.NumNodes = 1;
	EXPECT_NE(MakeAssemblyViewPage(Single).find("\n<p>1 part, 1 node</p>\n"), std::string::npos);
	Single.bIsAssembly = false;
	EXPECT_NE(MakeAssemblyViewPage(Single).find("\n<p>a static mesh, not an assembly</p>\n"), std::string::npos);
}

TEST(AssemblyViewPage, CarriesTheSceneAsDataThatNoNameCanBreak)
{
	const FAssemblyView View = MakeTwoPartView();
	const std::string Page = MakeAssemblyViewPage(View);
	// Every {{name}} of the template was filled, and a '<' in a name cannot end a script element early.
	EXPECT_EQ(Page.find("{{"), std::string::npos);
	EXPECT_EQ(Count(Page, "</script>"), Count(std::string(AssemblyViewTemplate), "</script>"));

	const FJson Scene = ScriptJson(Page, "<script type=\"application/json\" id=\"scene\">");
	ASSERT_TRUE(Scene.is_object()) << "the scene is not JSON";
	ASSERT_EQ(Scene["parts"].size(), 2u);
	const FJson& Cube = Scene["parts"][0];
	EXPECT_EQ(Cube["colour"], GetViewPartColour(0));
	EXPECT_EQ(DecodeNumbers<float>(Cube["positions"]), View.Parts[0].Positions);
	EXPECT_EQ(DecodeNumbers<float>(Cube["normals"]), View.Parts[0].Normals);
	EXPECT_EQ(DecodeNumbers<uint32_t>(Cube["indices"]), View.Parts[0].Indices);
	EXPECT_EQ(DecodeNumbers<float>(Cube["instances"]), View.Parts[0].Instances);
	const FJson& Gone = Scene["parts"][1];
	EXPECT_EQ(Gone["colour"], GetViewPartColour(1));
	EXPECT_EQ(Gone["positions"], "");
	EXPECT_EQ(Gone["indices"], "");
	EXPECT_EQ(DecodeNumbers<float>(Gone["instances"]), View.Parts[1].Instances);
	EXPECT_EQ(Scene["bounds"], FJson::parse(R"({"min": [-1.5, -0.5, -1.0], "max": [2.0, 3.5, 4.0]})"));

	FAssemblyView Empty = View;
	Empty.BoundsMin = FVector3f(1, 1, 1);
	Empty.BoundsMax = FVector3f(-1, -1, -1);
	EXPECT_TRUE(ScriptJson(MakeAssemblyViewPage(Empty), "<script type=\"application/json\" id=\"scene\">")["bounds"].is_null());
}

TEST(AssemblyViewPage, HoldsThreeJsAndReachesForNoNetwork)
{
	const std::string Page = MakeAssemblyViewPage(MakeTwoPartView());
	EXPECT_EQ(Page.find("http://"), std::string::npos);
	EXPECT_EQ(Page.find("https://"), std::string::npos);
	EXPECT_EQ(Page.find("src="), std::string::npos);

	const FJson ImportMap = ScriptJson(Page, "<script type=\"importmap\">");
	ASSERT_TRUE(ImportMap.is_object()) << "the import map is not JSON";
	ASSERT_EQ(ImportMap["imports"].size(), 3u);
	const std::string Prefix = "data:text/javascript;base64,";
	for (const FViewerModule& Module : ViewerModules)
	{
		const std::string Url = ImportMap["imports"].value(Module.Specifier, std::string());
		ASSERT_EQ(Url.rfind(Prefix, 0), 0u) << Module.Specifier;
		std::vector<uint8_t> Source;
		ASSERT_TRUE(DecodeBase64(std::string_view(Url).substr(Prefix.size()), Source)) << Module.Specifier;
		EXPECT_TRUE(std::string(Source.begin(), Source.end()) == Module.Source) << Module.Specifier;
	}
	// A module inside a data: URL can only import by a name the map knows.
	const std::string_view WebGl = ViewerModules[1].Source;
	EXPECT_STREQ(ViewerModules[1].Specifier, "three");
	EXPECT_NE(WebGl.find(" from 'three/core';"), std::string_view::npos);
	EXPECT_EQ(WebGl.find("./three.core.js"), std::string_view::npos);
	EXPECT_NE(ViewerModules[2].Source.find(" from 'three';"), std::string_view::npos);
}

TEST(AssemblyViewPage, GivesNeighbouringPartsDistinctColours)
{
	std::set<std::string> Colours;
	for (int32 Part = 0; Part < 10; ++Part)
	{
		const std::string Colour = GetViewPartColour(Part);
		EXPECT_EQ(Colour.size(), 7u);
		EXPECT_EQ(Colour.find_first_not_of("0123456789abcdef", 1), std::string::npos) << Colour;
		Colours.insert(Colour);
	}
	EXPECT_EQ(Colours.size(), 10u);
	EXPECT_EQ(GetViewPartColour(10), GetViewPartColour(0));
	EXPECT_EQ(GetViewPartColour(13), GetViewPartColour(3));
}
