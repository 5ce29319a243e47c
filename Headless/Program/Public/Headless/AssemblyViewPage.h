// Harness-only: the assembly viewer's page, one HTML file that holds everything it shows and three.js itself,
// so that it opens from the disk in a browser without a network.
#pragma once

#include "Headless/AssemblyViewScene.h"

#include <string>

namespace UE::Headless
{
	// The colour the page gives a part, "#rrggbb", from a fixed palette of distinct hues that repeats after its
	// last colour.
	[[nodiscard]] std::string GetViewPartColour(int32 PartIndex);

	// The page shows the view in 3D with orbit controls, under a legend that names each part's mesh with its
	// colour and instance count, and the node count. When it has drawn its first frame it sets the attribute
	// data-view-state of its root element to "rendered", or to "error: " and the reason when it cannot draw.
	[[nodiscard]] std::string MakeAssemblyViewPage(const FAssemblyView& View);
}
