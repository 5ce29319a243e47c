#include "CvaiCommands.h"
#include "CvaiEditorSession.h"

#include "Headless/FatalExit.h"
#include "Headless/MeshImport.h"
#include "Headless/StringUtils.h"

#include <cstdio>

namespace UE::Headless::Cvai
{
	namespace
	{
		constexpr const char* Help = "Imports the model file FILE (.gltf, .glb, .obj or .fbx, read with assimp) as a static mesh at DEST, a path completed\n"
			"as the verbs complete it (SM_Box, Meshes/SM_Box, /Game/Meshes/SM_Box, /Game/Meshes/SM_Box.SM_Box), and saves it\n"
			"through the editor's save path. Every mesh of the file's scene becomes part of the one static mesh, its node\n"
			"transforms baked in, triangulated and turned into the engine's frame: centimetres (glTF's metres x 100, FBX's\n"
			"own unit, one OBJ unit as one centimetre), Z up, left-handed. Each source material that is used becomes one\n"
			"material slot named after it, with the engine's BasicShapeMaterial. The project stays locked for the whole\n"
			"import, as for run.\n"
			"\n"
			"Output: one line, \"<object path>: <N> vertices, <N> triangles, <N> material slots: <names>\".\n";

		constexpr const char* ExitStatus = "Exit status: 0 when the mesh was imported and saved, 1 when the file cannot be read or holds no triangles,\n"
			"DEST is refused or exists without --replace, or the save failed (nothing is created or changed then), 2 for a\n"
			"usage error (including a folder without a .uproject), 3 when another cvai process kept the project past\n"
			"--lock-timeout, 4 when memory ran out.\n";

		constexpr FOption ReplaceOption{ "--replace", nullptr, "replace the static mesh at DEST if there is one (its file is backed up)" };

		int RunImport(const FCommandLine& CommandLine)
		{
			FEditorSession Editor(CommandLine, EProjectAccess::Write);
			if (const int Exit = Editor.Open(); Exit != ExitOk)
			{
				return Exit;
			}
			const FString Filename = FromUtf8(CommandLine.Positionals[0]);
			const FString Destination = FromUtf8(CommandLine.Positionals[1]);
			FMeshImportResult Result;
			FString Error;
			bool bImported = false;
			{
				const FScopedActivity Activity(TEXT("importing ") + Filename);
				bImported = ImportMeshFile(Filename, Destination, CommandLine.Has(ReplaceOption.Name), Result, Error);
			}
			if (!bImported)
			{
				std::fprintf(stderr, "cvai: %s\n", ToUtf8(Error).c_str());
				return ExitFailure;
			}
			std::printf("%s: %s\n", ToUtf8(Result.ObjectPath).c_str(), ToUtf8(DescribeImportedMesh(Result)).c_str());
			return ExitOk;
		}
	}

	const FCommand ImportCommand{ .Run = &RunImport,
		.Syntax = { .Name = "import", .Summary = "import a glTF, OBJ or FBX file as a static mesh", .Description = Help, .ExitStatus = ExitStatus,
			.Options = { ProjectOption, ReplaceOption, Unlisted(VerboseOption) },
			.Positionals = { .Names = { "FILE", "DEST" }, .MinCount = 2, .MissingMessage = "import needs a model file and a destination path",
				.ExtraMessage = "import takes one model file and one destination path" } } };
}
