#include "RatioReporter.h"

#include <cstdio>
#include <vector>

void FRatioReporter::ReportRuns(const std::vector<Run>& Runs)
{
	ConsoleReporter::ReportRuns(Runs);
	// With repetitions the median stands for the run (it comes after the repetitions themselves).
	for (const Run& Entry : Runs)
	{
		if (Entry.error_occurred)
		{
			continue;
		}
		if (Entry.run_type == Run::RT_Iteration || Entry.aggregate_name == "median")
		{
			Times[Entry.run_name.str()] = Entry.GetAdjustedRealTime();
		}
	}
}

double FRatioReporter::Time(const std::string& Name) const
{
	const auto Found = Times.find(Name);
	return Found == Times.end() ? 0.0 : Found->second;
}

void FRatioReporter::PrintRatio(const std::string& Label, const std::string& Numerator, const std::string& Denominator) const
{
	const double Top = Time(Numerator);
	const double Bottom = Time(Denominator);
	if (Top <= 0.0 || Bottom <= 0.0)
	{
		std::printf("%-60s (not measured: filtered out)\n", Label.c_str());
		return;
	}
	std::printf("%-60s %8.2fx\n", Label.c_str(), Top / Bottom);
}

int RunBenchmarksWithRatios(int Argc, char** Argv, const std::function<void(const FRatioReporter&)>& PrintRatios)
{
	// Runs of a benchmark and of its floor are interleaved and repeated, so that a machine whose speed drifts
	// during the run weighs on both alike; options given on the command line come after these and win.
	std::vector<char*> Arguments(Argv, Argv + Argc);
	static char Repetitions[] = "--benchmark_repetitions=5";
	static char Interleaving[] = "--benchmark_enable_random_interleaving=true";
	static char AggregatesOnly[] = "--benchmark_report_aggregates_only=true";
	Arguments.insert(Arguments.begin() + 1, { Repetitions, Interleaving, AggregatesOnly });
	Argc = (int)Arguments.size();
	Argv = Arguments.data();
	benchmark::Initialize(&Argc, Argv);
	if (benchmark::ReportUnrecognizedArguments(Argc, Argv))
	{
		return 1;
	}
	FRatioReporter Reporter;
	benchmark::RunSpecifiedBenchmarks(&Reporter);
	std::printf("\n");
	PrintRatios(Reporter);
	benchmark::Shutdown();
	return 0;
}
