// Console output of Google Benchmark, plus ratios between runs of the same program: every figure that a
// benchmark program prints is relative to a floor measured in the same run, never an absolute time.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>

class FRatioReporter : public benchmark::ConsoleReporter
{
public:
	void ReportRuns(const std::vector<Run>& Runs) override;

	// Real time of one iteration of the named run ("BM_Read/1000"), the median when repeated; 0 when it did not run.
	[[nodiscard]] double Time(const std::string& Name) const;

	// Prints "Label: A / B = ratio" (or a note that a run is missing).
	void PrintRatio(const std::string& Label, const std::string& Numerator, const std::string& Denominator) const;

private:
	std::map<std::string, double> Times;
};

// Runs the registered benchmarks, then calls PrintRatios with the times.
int RunBenchmarksWithRatios(int Argc, char** Argv, const std::function<void(const FRatioReporter&)>& PrintRatios);
