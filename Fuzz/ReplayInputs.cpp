// Runs the fuzz target once on each file given (or on each file of the folders given), so that inputs the
// fuzzer once crashed on stay tests of the ordinary build.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size);

int main(int Argc, char** Argv)
{
	namespace fs = std::filesystem;
	int Replayed = 0;
	for (int Index = 1; Index < Argc; ++Index)
	{
		std::vector<fs::path> Files;
		if (fs::is_directory(Argv[Index]))
		{
			for (const fs::directory_entry& Entry : fs::directory_iterator(Argv[Index]))
			{
				if (Entry.is_regular_file())
				{
					Files.push_back(Entry.path());
				}
			}
		}
		else
		{
			Files.push_back(Argv[Index]);
		}
		for (const fs::path& File : Files)
		{
			std::ifstream In(File, std::ios::binary);
			const std::vector<char> Bytes((std::istreambuf_iterator<char>(In)), std::istreambuf_iterator<char>());
			LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(Bytes.data()), Bytes.size());
			++Replayed;
		}
	}
	std::printf("replayed %d inputs\n", Replayed);
	return 0;
}
