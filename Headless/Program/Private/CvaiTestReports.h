// What cvai test prints and writes: a line per script and the closing count, TAP version 13, JUnit XML.
#pragma once

#include "CvaiTestResult.h"

#include <string>
#include <vector>

namespace UE::Headless::Cvai
{
	// "PASS path (0.21 s)", "SKIP path (reason)" or "FAIL path (0.21 s)" followed by the message and the script's
	// output, indented.
	std::string FormatResultText(const FTestResult& Result);

	// "N passed, N failed", with ", N skipped" when any was.
	std::string FormatSummary(const std::vector<FTestResult>& Results);

	std::string FormatTapHeader(size_t ScriptCount);
	// The result's TAP test line; a failure's message and output follow it as a YAML block.
	std::string FormatTapResult(const FTestResult& Result, size_t Number);

	// A JUnit XML document: one testsuite, a testcase per script.
	std::string FormatJUnit(const std::vector<FTestResult>& Results, double Seconds);
}
