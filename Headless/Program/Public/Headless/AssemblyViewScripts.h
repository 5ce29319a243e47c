// Harness-only: the texts the assembly viewer's page is made of, embedded into the program when it is built
// (Headless/Program/EmbedViewerScripts.cmake), so that a page never needs a network or files beside it.
#pragma once

#include <string_view>

namespace UE::Headless
{
	struct FViewerModule
	{
		// The name the page's import map gives the module.
		const char* Specifier;
		std::string_view Source;
	};

	// three.js's core, its WebGL module and its orbit controls; each imports only the ones before it, by name.
	extern const FViewerModule ViewerModules[3];

	// The page (Headless/Program/Web/AssemblyView.html), with {{name}} where the scene goes.
	extern const std::string_view AssemblyViewTemplate;
}
