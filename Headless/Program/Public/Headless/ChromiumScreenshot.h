// Harness-only: a picture of a web page as Chromium draws it, headless and with software WebGL, for machines
// without a screen or a GPU (CI).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace UE::Headless
{
	struct FPageScreenshot
	{
		std::string PageHtml;
		int Width = 1280;
		int Height = 720;
		// For the whole picture, Chromium's start included; Chromium is stopped when it runs out.
		double TimeoutSeconds = 120.0;
	};

	// The first "chromium" on PATH; empty when there is none.
	[[nodiscard]] std::string FindChromium();

	// Opens the page in a new Chromium with a profile of its own, in a temporary folder that is removed
	// afterwards, waits until the page sets data-view-state on its root element, and takes the picture when that
	// says "rendered". What Chromium printed is kept from the caller unless it failed: then OutError ends with it.
	bool CapturePageScreenshot(const std::string& Chromium, const FPageScreenshot& Request, std::vector<uint8_t>& OutPng, std::string& OutError);
}
