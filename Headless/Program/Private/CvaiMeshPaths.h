// The static mesh that a command's PATH names. Paths are completed by the module's own readback verb, so that
// every command takes what the verbs take: SM_Rock, Meshes/SM_Rock, /Game/Meshes/SM_Rock and
// /Game/Meshes/SM_Rock.SM_Rock all name the same mesh.
#pragma once

#include <string>

class UStaticMesh;

namespace UE::Headless::Cvai
{
	class FEditorSession;

	// Why the package that PATH names could not be loaded, when its file exists but is not one this build
	// reads; empty otherwise.
	std::string GetLoadFaultOfPath(const std::string& Path);

	// Loads the mesh that nanite_assembly_info(PATH) reads back; null with the reason: its package file's
	// fault, or the verb's refusal ("static mesh not found: PATH").
	UStaticMesh* LoadStaticMeshByPath(FEditorSession& Editor, const std::string& Path, std::string& OutError);
}
