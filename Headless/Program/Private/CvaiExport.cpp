#include "CvaiCommands.h"
#include "CvaiEditorSession.h"
#include "CvaiMeshPaths.h"

#include "Engine/StaticMesh.h"
#include "Headless/GltfExport.h"
#include "Headless/StringUtils.h"

#include <cstdio>
#include <string>

namespace UE::Headless::Cvai
{
	namespace
	{
		constexpr const char* Help = "Writes a static mesh as glTF 2.0: OUT.glb (binary) or OUT.gltf (JSON with its buffer embedded), in glTF's\n"
			"metres with Y up, right-handed, so that a viewer shows it as the editor does, not mirrored. An assembly\n"
			"becomes one mesh per part, with one primitive per material after the assembly's material remap, and one\n"
			"node per part that carries all its instances (EXT_mesh_gpu_instancing); --no-instancing gives that node one\n"
			"child node per instance instead, for viewers without the extension. Bone-relative nodes stand where their\n"
			"transform alone puts them. A plain static mesh becomes one mesh on one node. PATH is completed as the verbs\n"
			"complete it. The file is written beside OUT and renamed into place, so a failed export leaves no file.\n"
			"The last line is \"Exported OBJECT to OUT: N meshes, N instances, N materials, N bytes\".\n";

		constexpr const char* ExitStatus = "Exit status: 0 when the file was written, 1 when the mesh was not found, cannot be exported or the file\n"
			"cannot be written, 2 for a usage error (including an OUT that is neither .glb nor .gltf), 3 when another cvai\n"
			"process kept the project past --lock-timeout, 4 when memory ran out.\n";

		constexpr FOption NoInstancingOption{ "--no-instancing", nullptr, "one node per instance instead of EXT_mesh_gpu_instancing" };

		std::string Count(int64 Number, const char* One, const char* Many)
		{
			return std::to_string(Number) + " " + (Number == 1 ? One : Many);
		}

		int RunExport(const FCommandLine& CommandLine)
		{
			const std::string& Path = CommandLine.Positionals[0];
			const std::string& Output = CommandLine.Positionals[1];
			if (!IsGltfFilename(FromUtf8(Output)))
			{
				return UsageError("the output file must end in .glb or .gltf: '" + Output + "'", CommandLine.Command);
			}
			FEditorSession Editor(CommandLine);
			if (const int Exit = Editor.Open(); Exit != ExitOk)
			{
				return Exit;
			}
			std::string Error;
			const UStaticMesh* Mesh = LoadStaticMeshByPath(Editor, Path, Error);
			if (!Mesh)
			{
				std::fprintf(stderr, "cvai: %s\n", Error.c_str());
				return ExitFailure;
			}
			FGltfExportOptions Options;
			Options.bInstancing = !CommandLine.Has(NoInstancingOption.Name);
			FGltfExportSummary Summary;
			FString ExportError;
			const std::string MeshPath = ToUtf8(Mesh->GetPathName());
			if (!ExportStaticMeshAsGltf(*Mesh, FromUtf8(Output), Options, Summary, ExportError))
			{
				std::fprintf(stderr, "cvai: cannot export %s: %s\n", MeshPath.c_str(), ToUtf8(ExportError).c_str());
				return ExitFailure;
			}
			std::printf("Exported %s to %s: %s, %s, %s, %s\n", MeshPath.c_str(), Output.c_str(), Count(Summary.NumMeshes, "mesh", "meshes").c_str(),
				Count(Summary.NumInstances, "instance", "instances").c_str(), Count(Summary.NumMaterials, "material", "materials").c_str(),
				Count(Summary.NumBytes, "byte", "bytes").c_str());
			return ExitOk;
		}
	}

	const FCommand ExportCommand{ .Run = &RunExport,
		.Syntax = { .Name = "export", .Summary = "write a static mesh or an assembly as glTF 2.0 (.glb or .gltf)", .Description = Help,
			.ExitStatus = ExitStatus, .Options = { ProjectOption, NoInstancingOption, Unlisted(VerboseOption) },
			.Positionals = { .Names = { "PATH", "OUT.glb|OUT.gltf" }, .MinCount = 2, .DashedWord = EDashedWord::ValueUnlessDoubleDash,
				.MissingMessage = "export needs the path of a static mesh and an output file", .ExtraMessage = "export takes one path and one output file" } } };
}
